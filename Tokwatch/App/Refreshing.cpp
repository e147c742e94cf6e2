#include "Tokwatch/App/Refreshing.h"

#include <QPointer>

#include <utility>

namespace tokwatch {

Refreshing::Refreshing(Pass pass, Fetch fetchOne)
    : passOverAllLogs(std::move(pass)), fetch(std::move(fetchOne)) {}

void Refreshing::request(std::span<const ProviderID> asked) {
    const bool isFirst = refreshing.request();
    for (const ProviderID provider : asked) {
        const auto last = fetches.find(provider);
        if (last != fetches.end() && !last->second.isReady()) continue;
        fetches.insert_or_assign(provider, fetch(provider));
    }
    if (isFirst) refreshWhileWanted();
}

QCoro::Task<> Refreshing::refreshWhileWanted() {
    const QPointer<Refreshing> self(this);
    isUnderWayState.setValue(true);
    do {
        co_await passOverAllLogs();
        while (self && !fetches.empty()) {
            const QCoro::Task<> last = std::move(fetches.begin()->second);
            fetches.erase(fetches.begin());
            co_await last;
        }
        if (!self) co_return;
    } while (refreshing.finish());
    isUnderWayState.setValue(false);
}

} // namespace tokwatch

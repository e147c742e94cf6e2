#include "Tokwatch/App/StoreWatch.h"

#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QCoroFuture>
#include <QPointer>

#include <exception>
#include <utility>

namespace tokwatch {

StoreWatch::StoreWatch(std::shared_ptr<UsageStore> usageStore, RunInBackground elsewhere,
                       std::function<void()> stored, std::function<void()> reattached)
    : store(std::move(usageStore)), run(std::move(elsewhere)), onStored(std::move(stored)),
      onReattached(std::move(reattached)) {}

void StoreWatch::look(bool isTouched) {
    if (store->isDetached())
        reattach();
    else if (isTouched)
        lookForOthersDoing();
}

void StoreWatch::reattach() {
    if (!std::exchange(isReattaching, true)) reattachOnce();
}

QCoro::Task<> StoreWatch::lookForOthersDoing() {
    const QPointer<StoreWatch> self(this);
    const QFuture<std::optional<std::int64_t>> looking =
        inBackground(run, [store = store]() -> std::optional<std::int64_t> {
            try {
                return store->dataVersion();
            } catch (const std::exception&) {
                return std::nullopt; // the next operation says so
            }
        });
    const std::optional<std::int64_t> version = co_await looking;
    if (!self || !version || version == seenVersion) co_return;
    seenVersion = version;
    onStored();
}

QCoro::Task<> StoreWatch::reattachOnce() {
    const QPointer<StoreWatch> self(this);
    const QFuture<bool> reattaching = inBackground(run, [store = store] {
        try {
            if (!store->reattach()) return false;
            systemLog("the usage store has been opened anew");
            return true;
        } catch (const std::exception&) {
            return false; // as before; there is a line on it in the log
        }
    });
    const bool isAnother = co_await reattaching;
    if (!self) co_return;
    isReattaching = false;
    if (isAnother) onReattached();
}

} // namespace tokwatch

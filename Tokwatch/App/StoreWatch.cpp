#include "Tokwatch/App/StoreWatch.h"

#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QCoroFuture>
#include <QPointer>

#include <exception>
#include <string>
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
    const QFuture<bool> reattaching =
        inBackground(run, [store = store] { return store->reattach(); });
    bool isAnother = false;
    std::string trouble;
    try {
        isAnother = co_await reattaching;
    } catch (const std::exception& error) {
        trouble = error.what(); // once; it is tried again and again
    }
    if (!self) co_return;
    isReattaching = false;
    if (std::exchange(told, trouble) != trouble && !trouble.empty())
        systemLog("opening the usage store anew failed: " + trouble);
    if (!isAnother) co_return;
    systemLog("the usage store has been opened anew");
    onReattached();
}

} // namespace tokwatch

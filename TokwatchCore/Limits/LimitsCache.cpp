#include "TokwatchCore/Limits/LimitsCache.h"

#include "TokwatchCore/Store/UsageStore.h"

#include <utility>

namespace tokwatch {

LimitsCache::LimitsCache(std::shared_ptr<UsageStore> usageStore, BackgroundQueue::Run run)
    : store(std::move(usageStore)), queue(std::move(run)) {}

QFuture<std::optional<ProviderLimits>> LimitsCache::limits(ProviderID provider) {
    return queue.call([store = store, provider]() -> std::optional<ProviderLimits> {
        try {
            return store->limits(provider);
        } catch (const std::exception&) {
            return std::nullopt; // the store's other users tell of its failures
        }
    });
}

QFuture<void> LimitsCache::setLimits(ProviderLimits limits, ProviderID provider) {
    return queue.call([store = store, limits = std::move(limits), provider] {
        try {
            store->setLimits(limits, provider);
        } catch (const std::exception&) {
            // Likewise; the result is shown all the same.
        }
    });
}

} // namespace tokwatch

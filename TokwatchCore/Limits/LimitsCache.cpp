#include "TokwatchCore/Limits/LimitsCache.h"

#include "TokwatchCore/Records/ToldLimits.h"
#include "TokwatchCore/Store/UsageStore.h"

#include <utility>

namespace tokwatch {
namespace {

/// What there is to show after an attempt that brought no numbers: the stored ones, marked stale.
ProviderLimits besideStored(const ProviderLimits& unanswered,
                            const std::optional<ProviderLimits>& stored) {
    if (!stored || (stored->windows.empty() && !stored->credits)) return unanswered;
    // It has stored numbers already; others may have come since those were read.
    if (!unanswered.windows.empty())
        return stored->fetchedAt > unanswered.fetchedAt ? *stored : unanswered;
    ProviderLimits result = stored->markedStale();
    // What was told stays good when it grows stale.
    if (unanswered.status != ProviderStatus::unavailable || !isTold(*stored))
        result.status = unanswered.status;
    return result;
}

} // namespace

LimitsCache::LimitsCache(std::shared_ptr<UsageStore> usageStore, RunInBackground run)
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

QFuture<ProviderLimits> LimitsCache::setUnanswered(ProviderLimits unanswered, ProviderID provider) {
    return queue.call([store = store, unanswered = std::move(unanswered), provider] {
        ProviderLimits result = unanswered;
        try {
            store->changeLimits(provider, [&](const std::optional<ProviderLimits>& stored) {
                return result = besideStored(unanswered, stored);
            });
        } catch (const std::exception&) {
            // Likewise.
        }
        return result;
    });
}

} // namespace tokwatch

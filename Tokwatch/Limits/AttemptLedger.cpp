#include "Tokwatch/Limits/AttemptLedger.h"

#include <algorithm>

namespace tokwatch {

Seconds AttemptRecord::spacing(bool force) const {
    const bool hasFailed = !isAnswered || (lastStatus && *lastStatus != ProviderStatus::ok);
    if (force && hasFailed) return RefreshPolicy::forcedRetrySpacing;
    const bool backsOff =
        lastStatus == ProviderStatus::unreachable || lastStatus == ProviderStatus::rateLimited;
    return backsOff ? std::max(currentDelay, RefreshPolicy::baseInterval)
                    : RefreshPolicy::baseInterval;
}

Seconds AttemptRecord::wait(bool force, Date now) const {
    return spacing(force) - RefreshPolicy::elapsed(lastAttempt, now);
}

AttemptLedger::Entry MemoryAttemptLedger::edit(ProviderID provider, const Edit& edit) {
    const std::lock_guard lock(mutex);
    AttemptRecord& kept = records[provider];
    AttemptRecord edited = kept;
    if (edit(edited)) kept = edited;
    return {kept};
}

} // namespace tokwatch

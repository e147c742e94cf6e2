#include "Tokwatch/Limits/RefreshPolicy.h"

#include <algorithm>
#include <limits>

namespace tokwatch {

Seconds RefreshPolicy::nextDelay(ProviderStatus status, Seconds currentDelay) {
    switch (status) {
    case ProviderStatus::unreachable:
    case ProviderStatus::rateLimited:
        return std::clamp(2 * currentDelay, baseInterval, maximumBackoff);
    case ProviderStatus::ok:
    case ProviderStatus::signInNeeded:
    case ProviderStatus::accessDenied:
    case ProviderStatus::unavailable:
        break;
    }
    return baseInterval;
}

bool RefreshPolicy::shouldFetch(std::optional<Date> lastAttempt, std::optional<Date> lastSuccess,
                                Date now) {
    return elapsed(lastSuccess, now) >= baseInterval &&
           elapsed(lastAttempt, now) > minimumAttemptSpacing;
}

Seconds RefreshPolicy::elapsed(std::optional<Date> moment, Date now) {
    if (!moment || *moment > now) return Seconds{std::numeric_limits<double>::infinity()};
    return now - *moment;
}

} // namespace tokwatch

#pragma once

#include "TokwatchCore/Presentation/LimitAge.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Support/Date.h"

#include <optional>

namespace tokwatch {

/// How often a provider's service may be asked.
struct RefreshPolicy {
    /// Between fetches, and the age at which a successful result is due again.
    static constexpr Seconds baseInterval = LimitAge::betweenFetches;
    /// Where doubling the delay after failures ends.
    static constexpr Seconds maximumBackoff{1800};
    /// No two attempts of the application's own accord are closer than this.
    static constexpr Seconds minimumAttemptSpacing{60};
    /// A user may retry a failed fetch after this.
    static constexpr Seconds forcedRetrySpacing{30};

    /// The delay after a fetch that ended with `status`, the present one being `currentDelay`.
    static Seconds nextDelay(ProviderStatus status, Seconds currentDelay);

    /// Whether the application should think of fetching of its own accord.
    static bool shouldFetch(std::optional<Date> lastAttempt, std::optional<Date> lastSuccess,
                            Date now);

    /// The time since `moment`; endless when there was none, and when it lies in the future: then
    /// the clock was set back, and waiting for it could take years. Of an attempt `LimitsService`
    /// notes that first, so that not each such jump asks anew.
    static Seconds elapsed(std::optional<Date> moment, Date now);
};

} // namespace tokwatch

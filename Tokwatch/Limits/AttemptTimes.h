#pragma once

#include "TokwatchCore/Support/Date.h"

#include <optional>

namespace tokwatch {

/// When a provider's service was asked last and when it may be asked again, for those who tell the
/// user: "Tried just now · again in 24 s" is `nextRetry` less the present moment; "next try at
/// 12:50" is `nextFetch`.
struct AttemptTimes {
    std::optional<Date> lastAttempt; ///< whatever came of it
    std::optional<Date> nextRetry;   ///< a user's retry asks from then on; absent: at once
    std::optional<Date> nextFetch;   ///< asked by itself then; absent while nothing is planned
    bool isUnderWay = false;         ///< being asked at this moment

    bool operator==(const AttemptTimes&) const = default;
};

} // namespace tokwatch

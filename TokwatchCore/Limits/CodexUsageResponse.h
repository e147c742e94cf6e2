#pragma once

#include "TokwatchCore/Records/LimitRecords.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tokwatch {

/// What ChatGPT's usage endpoint answers:
///
///     {"plan_type": "plus", "rate_limit": {
///          "primary_window": {"used_percent": 42, "limit_window_seconds": 18000,
///                             "reset_at": <seconds since 1970>},
///          "secondary_window": {...}}}
///
/// Percentages are 0…100. Any key may be missing or null.
struct CodexUsageResponse {
    std::optional<std::string> plan;
    std::vector<LimitWindow> windows; ///< the session, then the week; all live

    /// DecodingError when a known key has an unexpected type.
    static CodexUsageResponse decode(std::string_view body);
};

} // namespace tokwatch

#pragma once

#include "TokwatchCore/Records/LimitRecords.h"

#include <optional>
#include <string_view>
#include <vector>

namespace tokwatch {

/// What Claude's usage endpoint answers:
///
///     {"five_hour": {"utilization": 19.5, "resets_at": "2026-01-17T15:00:00.123456+00:00"},
///      "seven_day": {...}, "seven_day_opus": {...}, "seven_day_sonnet": {...},
///      "limits": [{"kind": "weekly_scoped", "percent": 4, "resets_at": "...",
///                  "scope": {"model": {"display_name": "Opus 4"}}}, ...],
///      "extra_usage": {"is_enabled": true, "monthly_limit": 5000, "used_credits": 1234,
///                      "decimal_places": 2}}
///
/// Percentages are 0…100; amounts are in units of 10^-decimal_places dollars, cents by default. Any
/// key may be missing or null.
struct ClaudeUsageResponse {
    /// The session first, then the week, then the weeks of single models; all live.
    std::vector<LimitWindow> windows;
    std::optional<Credits> credits;

    /// DecodingError when a known key has an unexpected type.
    static ClaudeUsageResponse decode(std::string_view body);
};

} // namespace tokwatch

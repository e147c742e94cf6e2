#pragma once

#include "TokwatchCore/Records/LimitRecords.h"

#include <optional>

namespace tokwatch {

/// Claude's two limits that everybody has, as its service, its assistant and the store name them.
namespace ClaudeWindows {

inline constexpr const char* sessionID = "session";
inline constexpr const char* weeklyID = "weekly";
inline constexpr double sessionSeconds = 5 * 3600;
inline constexpr double weekSeconds = 7 * 86400;

inline LimitWindow session(double usedPercent, std::optional<Date> resetsAt, LimitSource source) {
    return {sessionID, "Session", clampedFraction(usedPercent), sessionSeconds, resetsAt, source};
}

inline LimitWindow weekly(double usedPercent, std::optional<Date> resetsAt, LimitSource source) {
    return {weeklyID, "Weekly", clampedFraction(usedPercent), weekSeconds, resetsAt, source};
}

} // namespace ClaudeWindows
} // namespace tokwatch

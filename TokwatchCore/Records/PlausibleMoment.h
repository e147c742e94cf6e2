#pragma once

#include "TokwatchCore/Support/Date.h"

#include <optional>

namespace tokwatch {

/// A reset's time in seconds since 1970. A time beyond the year 9999 is none (milliseconds, say)
/// and could not be shown as a date.
inline std::optional<Date> plausibleMoment(double unixSeconds) {
    constexpr double year10000 = 253402300800;
    const bool isPlausible = unixSeconds >= 0 && unixSeconds < year10000;
    return isPlausible ? std::optional(dateFromUnixSeconds(unixSeconds)) : std::nullopt;
}

} // namespace tokwatch

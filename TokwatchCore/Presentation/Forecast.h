#pragma once

#include "TokwatchCore/Presentation/BurnUp.h"
#include "TokwatchCore/Support/Date.h"

#include <optional>

namespace tokwatch {

/// Where the use of a limit's running window leads if it goes on as it does.
struct Forecast {
    /// When nothing is left: not before the present, and before the reset. Absent when it lasts
    /// until then, or nearly so: a limit that is on pace is told to last.
    std::optional<Date> usedUpAt;
    double usedAtReset = 0; ///< fraction, at most 1

    friend bool operator==(const Forecast&, const Forecast&) = default;
};

/// By the average since the window began: nearer to what comes than the last tenth of the window is
/// (docs/forecast.md). Absent where there is too little to go by: less than three observations in
/// 20 minutes, nothing used, or nothing left.
std::optional<Forecast> forecast(const BurnUp& course, Date now);

/// The same at any speed, a fraction a second.
std::optional<Forecast> forecastAt(double speed, const BurnUp& course, Date now);

/// From the one point to the other, a fraction a second; 0 without time between them.
double speedBetween(const BurnUp::Point& from, const BurnUp::Point& to);

} // namespace tokwatch

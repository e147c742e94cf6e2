#pragma once

#include "TokwatchCore/Presentation/Pace.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Support/Date.h"

#include <optional>
#include <string>

namespace tokwatch {

/// Fractions come from whole percentages, and 1 − 0.56 is a hair less than 0.44: what is this close
/// to a whole percentage or to a threshold counts as being there.
constexpr double fractionTolerance = 1e-9;

/// Whether a fraction left is at a threshold, or below it.
bool isAtOrBelow(double left, double threshold);

/// The percentage of a fraction, cut off towards zero.
double wholePercent(double fraction);

/// What a bar shows of one limit window at one moment.
struct LimitBarModel {
    double leftFraction = 0;                ///< still available, 1 − used
    std::optional<double> timeLeftFraction; ///< of the window's duration, 0…1
    Pace pace = Pace::unknown;
    std::string percentLeftText;          ///< "37%", cut off rather than rounded: 0.4 % left is 0 %
    std::optional<std::string> resetText; ///< time to the reset, "3h 5m", or "now"

    LimitBarModel(const LimitWindow& window, Date now);

    friend bool operator==(const LimitBarModel&, const LimitBarModel&) = default;
};

} // namespace tokwatch

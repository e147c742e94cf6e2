#pragma once

#include "Date.h"
#include "LimitRecords.h"
#include "Pace.h"

#include <optional>
#include <string>

namespace tokwatch {

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

#pragma once

#include "Tokwatch/Preferences/PreferenceTypes.h"

#include <cstdint>
#include <string>

namespace tokwatch {

/// An amount of usage in both units.
struct UsageAmount {
    double costUSD = 0;
    std::int64_t tokens = 0;

    double in(SummaryUnit unit) const {
        return unit == SummaryUnit::cost ? costUSD : static_cast<double>(tokens);
    }
    UsageAmount& operator+=(const UsageAmount& other);

    std::string text(SummaryUnit unit) const; ///< "$12.40", "1.23M"
    std::string note(SummaryUnit unit) const; ///< in the other unit: "1.23M tokens", "$12.40"
    std::string spoken(SummaryUnit unit) const;
};

} // namespace tokwatch

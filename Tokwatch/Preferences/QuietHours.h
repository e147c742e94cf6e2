#pragma once

#include "Tokwatch/Preferences/SettingCoding.h"

#include <string>
#include <string_view>

namespace tokwatch {

/// A time of day on the user's clock.
struct TimeOfDay {
    int minutes = 0; ///< since midnight, 0 … 1439

    friend auto operator<=>(const TimeOfDay&, const TimeOfDay&) = default;
};

/// From the first time to the second, over midnight where that is the earlier one; never, where
/// both are the same.
bool isWithin(TimeOfDay time, TimeOfDay from, TimeOfDay until);

// As a setting: "22:00", "7:30".
void storeSetting(SettingsStorage& settings, const char* key, TimeOfDay value);
std::string textOf(TimeOfDay value);
bool parseText(std::string_view text, TimeOfDay& value);
SettingDomain domainOf(TimeOfDay);

} // namespace tokwatch

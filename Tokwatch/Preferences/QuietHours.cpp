#include "Tokwatch/Preferences/QuietHours.h"

#include <charconv>

namespace tokwatch {
namespace {

/// The whole text as a number below the bound.
bool parseBelow(int bound, std::string_view text, int& value) {
    const auto [end, error] = std::from_chars(text.begin(), text.end(), value);
    return error == std::errc{} && end == text.end() && value >= 0 && value < bound;
}

} // namespace

bool isWithin(TimeOfDay time, TimeOfDay from, TimeOfDay until) {
    if (from <= until) return from <= time && time < until;
    return from <= time || time < until;
}

void storeSetting(SettingsStorage& settings, const char* key, TimeOfDay value) {
    storeText(settings, key, textOf(value));
}

std::string textOf(TimeOfDay value) {
    const int minute = value.minutes % 60;
    return std::to_string(value.minutes / 60) + (minute < 10 ? ":0" : ":") + std::to_string(minute);
}

bool parseText(std::string_view text, TimeOfDay& value) {
    const std::string_view time = trimmed(text);
    const std::size_t colon = time.find(':');
    int hour = 0;
    int minute = 0;
    if (colon == std::string_view::npos || time.size() != colon + 3 ||
        !parseBelow(24, time.substr(0, colon), hour) ||
        !parseBelow(60, time.substr(colon + 1), minute))
        return false;
    value.minutes = 60 * hour + minute;
    return true;
}

SettingDomain domainOf(TimeOfDay) {
    return {"a time of day from 0:00 to 23:59", {}};
}

} // namespace tokwatch

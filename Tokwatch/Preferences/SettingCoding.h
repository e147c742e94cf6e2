#pragma once

#include "Tokwatch/Preferences/SettingsStorage.h"
#include "Tokwatch/Preferences/StoredEntries.h"

#include <optional>
#include <string>
#include <string_view>

namespace tokwatch {

/// Text under the key; none when it is missing or not one text.
std::optional<std::string> storedText(const SettingsStorage& settings, const char* key);
void storeText(SettingsStorage& settings, const char* key, std::string_view text);
/// The same of a time, in seconds since 1970.
std::optional<Date> storedDate(const SettingsStorage& settings, const char* key);

/// What is stored of the setting of that name.
StoredEntries entriesOf(const SettingsStorage& settings, const char* name);

// How each type of setting is stored.

void storeSetting(SettingsStorage& settings, const char* key, bool value);
void storeSetting(SettingsStorage& settings, const char* key, double value);
void storeSetting(SettingsStorage& settings, const char* key, const ProviderList& value);
void storeSetting(SettingsStorage& settings, const char* key, const ProviderSet& value);
void storeSetting(SettingsStorage& settings, const char* key, const WindowChoices& value);
template<NamedCase Case>
void storeSetting(SettingsStorage& settings, const char* key, Case value) {
    storeText(settings, key, rawValue(value));
}

} // namespace tokwatch

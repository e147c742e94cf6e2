#pragma once

#include "Tokwatch/Preferences/StoredEntries.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

class QSettings;

namespace tokwatch {

/// Where the settings are kept.
std::filesystem::path fileOf(const QSettings& settings);

/// Whether settings may be read from and written to their file (`settingsObstacle`).
bool storageIsSound(const QSettings& settings);
/// The same before a setting is written, which makes the file where it is missing.
bool prepareStorage(const QSettings& settings);

/// Text under the key; none when it is missing or not one text.
std::optional<std::string> storedText(const QSettings& settings, const char* key);
void storeText(QSettings& settings, const char* key, std::string_view text);
/// The same of a time, in seconds since 1970.
std::optional<Date> storedDate(const QSettings& settings, const char* key);

/// What the file has of the setting of that name.
StoredEntries entriesOf(const QSettings& settings, const char* name);

// How each type of setting is written into the file.

void storeSetting(QSettings& settings, const char* key, bool value);
void storeSetting(QSettings& settings, const char* key, double value);
void storeSetting(QSettings& settings, const char* key, const ProviderList& value);
void storeSetting(QSettings& settings, const char* key, const ProviderSet& value);
void storeSetting(QSettings& settings, const char* key, const WindowChoices& value);
template<NamedCase Case>
void storeSetting(QSettings& settings, const char* key, Case value) {
    storeText(settings, key, rawValue(value));
}

} // namespace tokwatch

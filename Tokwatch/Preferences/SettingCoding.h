#pragma once

#include "Tokwatch/Preferences/SettingText.h"

#include <optional>
#include <string>
#include <string_view>

class QSettings;

namespace tokwatch {

/// Whether settings may be read from and written to their file (`settingsObstacle`).
bool storageIsSound(const QSettings& settings);

/// Text under the key; none when it is missing or not one text.
std::optional<std::string> storedText(const QSettings& settings, const char* key);
void storeText(QSettings& settings, const char* key, std::string_view text);

// How each type of setting stands in the settings file. Loading leaves `value` alone when the key
// is missing or holds something else.

void loadSetting(const QSettings& settings, const char* key, bool& value);
void loadSetting(const QSettings& settings, const char* key, double& value);
/// Unknown names and repetitions are dropped.
void loadSetting(const QSettings& settings, const char* key, ProviderList& value);
void loadSetting(const QSettings& settings, const char* key, ProviderSet& value);
/// A group with one entry for each pair.
void loadSetting(QSettings& settings, const char* key, WindowChoices& value);
template<NamedCase Case>
void loadSetting(const QSettings& settings, const char* key, Case& value) {
    if (const auto text = storedText(settings, key)) value = caseNamed<Case>(*text).value_or(value);
}

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

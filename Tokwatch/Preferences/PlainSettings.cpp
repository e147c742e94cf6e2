#include "Tokwatch/Preferences/PlainSettings.h"

#include "Platform/System/Places.h"
#include "Tokwatch/Preferences/SettingsFile.h"
#include "Tokwatch/Preferences/StoredSettings.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <string_view>

namespace tokwatch {
namespace {

// As the toolkit's half loads them: `value` stays where the key is missing or holds something else.

void load(const StoredSettings& settings, const char* key, bool& value) {
    if (const auto text = settings.text(key)) parseText(*text, value);
}

void load(const StoredSettings& settings, const char* key, double& value) {
    const std::string text = settings.text(key).value_or("");
    std::string_view number = trimmed(text);
    if (number.starts_with('+') && !number.starts_with("+-")) number.remove_prefix(1);
    double parsed = 0;
    const auto [end, error] = std::from_chars(number.begin(), number.end(), parsed);
    if (error == std::errc{} && end == number.end()) value = parsed;
}

template<NamedCase Case>
void load(const StoredSettings& settings, const char* key, Case& value) {
    if (const auto text = settings.text(key)) value = caseNamed<Case>(*text).value_or(value);
}

ProviderList providers(const StoredSettings& settings, const char* key) {
    ProviderList named;
    for (const std::string& name : settings.list(key))
        if (const auto provider = providerFromRawValue(trimmed(name))) named.push_back(*provider);
    return named;
}

std::vector<ProviderID> enabledProviders(const StoredSettings& settings) {
    const ProviderList disabled = providers(settings, "disabledProviders");
    return enabledOf(completed(providers(settings, "providerOrder")),
                     {disabled.begin(), disabled.end()});
}

Thresholds thresholds(const StoredSettings& settings) {
    Thresholds levels;
    load(settings, "warningThreshold", levels.warning);
    load(settings, "criticalThreshold", levels.critical);
    levels.warning = Thresholds::acceptedWarning(levels.warning);
    levels.critical = Thresholds::acceptedCritical(levels.critical, levels.warning);
    return levels;
}

/// $XDG_CONFIG_HOME; a relative one is invalid by the base directory rules and counts as not set.
std::filesystem::path configHome() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment.
    const char* given = std::getenv("XDG_CONFIG_HOME");
    if (given != nullptr && std::filesystem::path(given).is_absolute()) return given;
    return homeDirectory() / ".config";
}

PlainSettings settingsIn(const std::string& text) {
    PlainSettings plain;
    const StoredSettings settings(text);
    load(settings, "menuBarStyle", plain.menuBarStyle);
    load(settings, "pinnedProvider", plain.pinnedProvider);
    plain.isPinChosen = settings.contains("pinnedProvider");
    load(settings, "showResetTime", plain.showResetTime);
    plain.menuBarWindows = settings.group("menuBarWindows");
    plain.thresholds = tokwatch::thresholds(settings);
    load(settings, "tintEnabled", plain.tintEnabled);
    plain.enabledProviders = tokwatch::enabledProviders(settings);
    // What is neither true nor false forbids.
    plain.claudeLiveLimits = !settings.contains("claudeLiveLimits");
    load(settings, "claudeLiveLimits", plain.claudeLiveLimits);
    load(settings, "summaryUnit", plain.summaryUnit);
    return plain;
}

} // namespace

PlainSettings PlainSettings::read(const std::filesystem::path& file) {
    return settingsIn(readSettings(file).text);
}

PlainSettings PlainSettings::ofUser() {
    const std::filesystem::path file = settingsPath();
    const SettingsContents contents = readSettings(file);
    for (const std::string& fault : settingsFaults(file, contents))
        systemLog(fault);
    return settingsIn(contents.text);
}

std::filesystem::path settingsPath() {
    return configHome() / "Tokwatch/Tokwatch.conf";
}

ProviderList completed(const ProviderList& given) {
    ProviderList order;
    const auto append = [&order](ProviderID provider) {
        if (std::ranges::count(order, provider) == 0) order.push_back(provider);
    };
    std::ranges::for_each(given, append);
    std::ranges::for_each(allCases<ProviderID>, append);
    return order;
}

std::vector<ProviderID> enabledOf(const ProviderList& order, const ProviderSet& disabled) {
    std::vector<ProviderID> enabled;
    std::ranges::copy_if(order, std::back_inserter(enabled),
                         [&disabled](ProviderID provider) { return !disabled.contains(provider); });
    return enabled;
}

} // namespace tokwatch

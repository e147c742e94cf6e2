#include "Tokwatch/Preferences/PlainSettings.h"

#include "Platform/System/Places.h"
#include "Tokwatch/Preferences/SettingsFile.h"
#include "Tokwatch/Preferences/StoredSettings.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace tokwatch {
namespace {

template<typename Value>
Value stored(const StoredSettings& settings, const char* key, Value fallback) {
    takeStored(settings.entries(key), fallback);
    return fallback;
}

std::vector<ProviderID> enabledProviders(const StoredSettings& settings) {
    return enabledOf(completed(stored(settings, "providerOrder", ProviderList())),
                     stored(settings, "disabledProviders", ProviderSet()));
}

Thresholds thresholds(const StoredSettings& settings) {
    Thresholds levels;
    levels.warning =
        Thresholds::acceptedWarning(stored(settings, "warningThreshold", levels.warning));
    levels.critical = Thresholds::acceptedCritical(
        stored(settings, "criticalThreshold", levels.critical), levels.warning);
    return levels;
}

/// $XDG_CONFIG_HOME; a relative one is invalid by the base directory rules and counts as not set.
std::filesystem::path configHome() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the main thread alone asks and changes.
    const char* given = std::getenv("XDG_CONFIG_HOME");
    if (given != nullptr && std::filesystem::path(given).is_absolute()) return given;
    return homeDirectory() / ".config";
}

PlainSettings settingsIn(const std::string& text) {
    PlainSettings plain;
    const StoredSettings settings(text);
    const auto load = [&settings](const char* key, auto& value) {
        value = stored(settings, key, value);
    };
    load("menuBarStyle", plain.menuBarStyle);
    load("pinnedProvider", plain.pinnedProvider);
    plain.isPinChosen = settings.entries("pinnedProvider").contains("");
    load("showResetTime", plain.showResetTime);
    load("menuBarWindows", plain.menuBarWindows);
    plain.thresholds = tokwatch::thresholds(settings);
    load("tintEnabled", plain.tintEnabled);
    plain.enabledProviders = tokwatch::enabledProviders(settings);
    // What is neither true nor false forbids.
    plain.claudeLiveLimits = settings.entries("claudeLiveLimits").empty();
    load("claudeLiveLimits", plain.claudeLiveLimits);
    load("summaryUnit", plain.summaryUnit);
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

std::filesystem::path desktopSettingsPath() {
    return settingsPath().parent_path() / "Desktop.conf";
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

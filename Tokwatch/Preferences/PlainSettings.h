#pragma once

#include "Tokwatch/Preferences/SettingText.h"
#include "Tokwatch/Preferences/Thresholds.h"

#include <filesystem>
#include <vector>

namespace tokwatch {

/// What of the user's settings decides what is shown, as plain values: of the `Preferences`, or
/// read from their file without the toolkit, where nothing is observed, made or written.
struct PlainSettings {
    MenuBarStyle menuBarStyle = MenuBarStyle::provider;
    ProviderID pinnedProvider = ProviderID::claude;
    bool isPinChosen = false; ///< whether anybody ever chose the provider
    bool showResetTime = true;
    WindowChoices menuBarWindows = {};
    Thresholds thresholds = {};
    bool tintEnabled = true;
    /// In the user's order.
    std::vector<ProviderID> enabledProviders = {allCases<ProviderID>.begin(),
                                                allCases<ProviderID>.end()};
    bool claudeLiveLimits = true;
    SummaryUnit summaryUnit = SummaryUnit::cost;

    /// The defaults where the file cannot be read.
    static PlainSettings read(const std::filesystem::path& file);
    /// The user's; what is wrong with the file goes into the log.
    static PlainSettings ofUser();

    friend bool operator==(const PlainSettings&, const PlainSettings&) = default;
};

/// The settings file of the user, $XDG_CONFIG_HOME/Tokwatch/Tokwatch.conf.
std::filesystem::path settingsPath();
/// That of the windows alone, beside it.
std::filesystem::path desktopSettingsPath();

/// Each provider once: the given ones in their order, then the others in declaration order.
ProviderList completed(const ProviderList& given);

/// Those of the order that are not disabled.
std::vector<ProviderID> enabledOf(const ProviderList& order, const ProviderSet& disabled);

} // namespace tokwatch

#pragma once

#include "Tokwatch/Preferences/PlainSettings.h"
#include "Tokwatch/Preferences/Setting.h"
#include "TokwatchCore/Support/Date.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class QSettings;

namespace tokwatch {

class SettingsFollower;

/// The user's settings, kept in a settings file under their own names. Main thread only.
///
/// No setting can fail to load: what is missing or malformed reads as its default. The file is
/// written from the event loop after an assignment, or at the latest when the QSettings end.
class Preferences {
  public:
    /// The settings outlive the preferences.
    explicit Preferences(QSettings& settings);
    ~Preferences();
    Preferences(const Preferences&) = delete;
    Preferences& operator=(const Preferences&) = delete;

  private:
    SettingList list;

  public:
    Setting<bool> showDockIcon;
    Setting<bool> hasCompletedOnboarding;
    Setting<MenuBarStyle> menuBarStyle;
    /// Whose number the title shows, if enabled.
    Setting<ProviderID> pinnedProvider;
    Setting<bool> showResetTime;
    /// From a provider's raw value to the id of the window that stands for it in the title; a
    /// provider without an entry is shown by the window that is closest to running out.
    Setting<WindowChoices> menuBarWindows;
    /// Fractions of a limit left at which it turns yellow and red.
    Setting<double> warningThreshold;
    Setting<double> criticalThreshold;
    Setting<bool> tintEnabled;
    /// Always all providers, each once.
    Setting<ProviderList> providerOrder;
    Setting<ProviderSet> disabledProviders;
    /// Allows fetching Claude's limits with its login. A value that is no boolean forbids it.
    Setting<bool> claudeLiveLimits;
    Setting<SummaryUnit> summaryUnit;
    Setting<PopoverTab> popoverTab;

    /// All of the above, in their order.
    const std::vector<AnySetting*>& all() const { return list.all; }
    /// The setting of that name, or none.
    AnySetting* named(std::string_view name) const;

    /// Whether the settings are the user's: not where there is a file that could not be read, which
    /// may forbid what the defaults allow.
    bool areKnown() const;

    /// `providerOrder` less `disabledProviders`.
    std::vector<ProviderID> enabledProviders() const;
    /// Keeps the other providers as they are.
    void setEnabled(ProviderID provider, bool isEnabled);

    /// When old days were last deleted; not a setting, but kept with them.
    std::optional<Date> lastPruneAt() const;
    void setLastPruneAt(Date date);

    /// Follows changes that other processes make to the file, for as long as this lives. Needs an
    /// event loop.
    void followFile();
    /// Reads the file again and notifies of what changed.
    void reload();
    /// Writes the file now; false when that failed.
    bool save();

  private:
    void tellFaults();

    QPropertyNotifier warningChanged;
    std::vector<std::string> toldFaults; ///< of the file, in the log
    std::unique_ptr<SettingsFollower> follower;
};

/// The user's settings, at `settingsPath`. A file that cannot be read,
/// or is no regular file of bounded size, is a line in the log; the defaults hold then, nothing is
/// saved, and the preferences are not `areKnown`.
std::unique_ptr<QSettings> userSettings();
/// The settings file at the path. It and its directory are made when they are missing.
std::unique_ptr<QSettings> settingsFile(const std::filesystem::path& file);
/// Settings without a file, all at their defaults: for their names and what they may be.
std::unique_ptr<QSettings> settingsOfNobody();

} // namespace tokwatch

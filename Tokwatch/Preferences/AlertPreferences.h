#pragma once

#include "Tokwatch/Preferences/QuietHours.h"
#include "Tokwatch/Preferences/Setting.h"

#include <filesystem>
#include <memory>
#include <set>

namespace tokwatch {

class SettingsFollower;

/// What the user can be told of without looking.
enum class AlertKind {
    usedUp,   ///< nothing of a limit is left
    critical, ///< the critical level is reached
    runsOut,  ///< at its pace a limit is used up within the hour
    warning,  ///< the warning level is reached
    reset,    ///< a limit that was critical has reset
    signIn,   ///< a login has expired
};
template<>
inline constexpr std::array<std::string_view, 6> caseNames<AlertKind>{
    "usedUp", "critical", "runsOut", "warning", "reset", "signIn"};

/// Of what the user wants to be told and when not, kept in a file of their own beside that of the
/// Preferences. Main thread only; as there, no setting can fail to load.
class AlertPreferences {
  public:
    /// The settings outlive the preferences.
    explicit AlertPreferences(QSettings& settings);
    ~AlertPreferences();
    AlertPreferences(const AlertPreferences&) = delete;
    AlertPreferences& operator=(const AlertPreferences&) = delete;

  private:
    SettingList list;

  public:
    Setting<bool> usedUp;
    Setting<bool> critical;
    Setting<bool> runsOut;
    Setting<bool> warning;
    Setting<bool> reset;
    Setting<bool> signIn;
    /// Whether nothing is told from one time of day to the other.
    Setting<bool> quietHours;
    Setting<TimeOfDay> quietFrom;
    Setting<TimeOfDay> quietUntil;

    /// All of the above, in their order.
    const std::vector<AnySetting*>& all() const { return list.all; }
    Setting<bool>& of(AlertKind kind);
    const Setting<bool>& of(AlertKind kind) const;
    std::set<AlertKind> wanted() const;
    bool isQuietAt(TimeOfDay time) const;

    /// Follows changes that other processes make to the file, for as long as this lives. Needs an
    /// event loop.
    void followFile();

  private:
    void reload();

    std::unique_ptr<SettingsFollower> follower;
};

/// $XDG_CONFIG_HOME/Tokwatch/Notifications.conf. One that cannot be used is a line in the log; the
/// defaults hold then, and nothing is saved.
std::unique_ptr<QSettings> userAlertSettings();
std::unique_ptr<QSettings> alertSettingsFile(const std::filesystem::path& file);

} // namespace tokwatch

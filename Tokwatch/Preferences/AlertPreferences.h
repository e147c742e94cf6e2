#pragma once

#include "Tokwatch/Preferences/QuietHours.h"
#include "Tokwatch/Preferences/SettingsGroup.h"

#include <memory>
#include <set>

namespace tokwatch {

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

/// Of what the user wants to be told and when not. Main thread only.
class AlertPreferences final : public SettingsGroup {
  public:
    explicit AlertPreferences(std::unique_ptr<SettingsStorage> settings);

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

    Setting<bool>& of(AlertKind kind);
    const Setting<bool>& of(AlertKind kind) const;
    std::set<AlertKind> wanted() const;
    bool isQuietAt(TimeOfDay time) const;
};

/// Notifications.conf beside the file of the Preferences.
std::filesystem::path alertSettingsPath();

} // namespace tokwatch

#include "Tokwatch/Preferences/AlertPreferences.h"

#include "Tokwatch/Preferences/PlainSettings.h"

#include <utility>

namespace tokwatch {
namespace {

constexpr TimeOfDay evening{22 * 60};
constexpr TimeOfDay morning{8 * 60};

} // namespace

AlertPreferences::AlertPreferences(std::unique_ptr<SettingsStorage> settings)
    : SettingsGroup(std::move(settings)),
      usedUp(list, "usedUp", "tell that a limit is used up", true),
      critical(list, "critical", "tell that a limit is critical", true),
      runsOut(list, "runsOut", "tell that a limit runs out within the hour", false),
      warning(list, "warning", "tell that a limit is at the warning level", false),
      reset(list, "reset", "tell that a limit has reset that was critical", false),
      signIn(list, "signIn", "tell that a login has expired", false),
      quietHours(list, "quietHours", "tell nothing from quietFrom to quietUntil", false),
      quietFrom(list, "quietFrom", "when the quiet hours begin", evening),
      quietUntil(list, "quietUntil", "when the quiet hours end", morning) {
    tellFaults();
}

const Setting<bool>& AlertPreferences::of(AlertKind kind) const {
    switch (kind) {
    case AlertKind::usedUp:
        return usedUp;
    case AlertKind::critical:
        return critical;
    case AlertKind::runsOut:
        return runsOut;
    case AlertKind::warning:
        return warning;
    case AlertKind::reset:
        return reset;
    case AlertKind::signIn:
        break;
    }
    return signIn;
}

Setting<bool>& AlertPreferences::of(AlertKind kind) {
    return const_cast<Setting<bool>&>(std::as_const(*this).of(kind));
}

std::set<AlertKind> AlertPreferences::wanted() const {
    std::set<AlertKind> kinds;
    for (const AlertKind kind : allCases<AlertKind>)
        if (of(kind)) kinds.insert(kind);
    return kinds;
}

bool AlertPreferences::isQuietAt(TimeOfDay time) const {
    return quietHours && isWithin(time, quietFrom, quietUntil);
}

std::filesystem::path alertSettingsPath() {
    return settingsPath().parent_path() / "Notifications.conf";
}

} // namespace tokwatch

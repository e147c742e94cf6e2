#include "Tokwatch/DesktopPreferences/DesktopPreferences.h"

#include "Tokwatch/Preferences/PlainSettings.h"
#include "TokwatchCore/Support/SystemLog.h"

namespace tokwatch {
namespace {

template<typename Value>
void tellIfMalformed(const QSettings& settings, const Setting<Value>& setting) {
    if (!settings.contains(setting.name)) return;
    const std::optional<std::string> stored = storedText(settings, setting.name);
    if (Value value{}; stored && parseText(*stored, value)) return;
    systemLog(std::string(setting.name) + " in " + settings.fileName().toStdString() + " is not " +
              setting.domain().values + "; it counts as \"" + setting.text() + '"');
}

} // namespace

DesktopPreferences::DesktopPreferences(QSettings& settings)
    : SettingsGroup(settings),
      theme(list, "theme", "the tone of the windows", kivo::ToneChoice::desktop),
      hotKey(list, "hotKey", "the keys that open the popover from anywhere", {}),
      isPinned(list, "pinned", "the limits in a small panel above other windows", false),
      panelFrames(list, "panelFrames", "where that panel was left", {}) {
    tellFaults();
    tellIfMalformed(settings, theme);
    tellIfMalformed(settings, hotKey);
    tellIfMalformed(settings, isPinned);
    tellIfMalformed(settings, panelFrames);
}

std::filesystem::path desktopSettingsPath() {
    return settingsPath().parent_path() / "Desktop.conf";
}

} // namespace tokwatch

#include "Tokwatch/DesktopPreferences/DesktopPreferences.h"

namespace tokwatch {

DesktopPreferences::DesktopPreferences(SettingsStorage& settings)
    : SettingsGroup(settings),
      theme(list, "theme", "the tone of the windows", kivo::ToneChoice::desktop),
      hotKey(list, "hotKey", "the keys that open the popover from anywhere", {}),
      isPinned(list, "pinned", "the limits in a small panel above other windows", false),
      panelFrames(list, "panelFrames", "where that panel was left", {}) {
    tellFaults();
}

} // namespace tokwatch

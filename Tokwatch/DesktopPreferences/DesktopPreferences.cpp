#include "Tokwatch/DesktopPreferences/DesktopPreferences.h"

#include <utility>

namespace tokwatch {

DesktopPreferences::DesktopPreferences(std::unique_ptr<SettingsStorage> settings)
    : SettingsGroup(std::move(settings)),
      theme(list, "theme", "the tone of the windows", kivo::ToneChoice::desktop),
      hotKey(list, "hotKey", "the keys that open the popover from anywhere", {}),
      isPinned(list, "pinned", "the limits in a small panel above other windows", false),
      panelFrames(list, "panelFrames", "where that panel was left", {}) {
    tellFaults();
}

} // namespace tokwatch

#pragma once

#include "Tokwatch/DesktopPreferences/DesktopChoices.h"
#include "Tokwatch/Preferences/SettingsGroup.h"

#include <memory>

namespace tokwatch {

/// What the user wants of the windows alone; commands have no use for it. At
/// `desktopSettingsPath`. Main thread only.
class DesktopPreferences final : public SettingsGroup {
  public:
    explicit DesktopPreferences(std::unique_ptr<SettingsStorage> settings);

    Setting<kivo::ToneChoice> theme;
    /// What opens the popover from anywhere.
    Setting<HotKeyChoice> hotKey;
    /// The limits stand in a small panel above other windows.
    Setting<bool> isPinned;
    /// Where that panel was left.
    Setting<PanelFrames> panelFrames;
};

} // namespace tokwatch

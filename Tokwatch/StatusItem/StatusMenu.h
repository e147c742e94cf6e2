#pragma once

#include "KivoMenuBar/DBusMenu.h"

#include <functional>
#include <vector>

namespace tokwatch {

struct StatusMenuActions {
    std::function<void()> refresh;
    std::function<void()> openSettings;
    std::function<void()> checkForUpdates; ///< none when updates cannot be looked for
    std::function<void()> quit;
};

/// The item's context menu.
std::vector<kivo::MenuEntry> statusMenu(const StatusMenuActions& actions);

} // namespace tokwatch

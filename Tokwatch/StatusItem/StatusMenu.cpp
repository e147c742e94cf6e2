#include "Tokwatch/StatusItem/StatusMenu.h"

namespace tokwatch {

std::vector<kivo::MenuEntry> statusMenu(const StatusMenuActions& actions) {
    std::vector<kivo::MenuEntry> entries{
        {QStringLiteral("Refresh"), QKeySequence(Qt::CTRL | Qt::Key_R), actions.refresh},
        {QStringLiteral("Settings…"), QKeySequence(Qt::CTRL | Qt::Key_Comma), actions.openSettings},
    };
    if (actions.checkForUpdates)
        entries.push_back({QStringLiteral("Check for Updates…"), {}, actions.checkForUpdates});
    entries.push_back(kivo::MenuEntry::separator());
    entries.push_back(
        {QStringLiteral("Quit Tokwatch"), QKeySequence(Qt::CTRL | Qt::Key_Q), actions.quit});
    return entries;
}

} // namespace tokwatch

#include "Tokwatch/Desktop/WidgetStarter.h"

#include "KivoLaunch/DetachedStart.h"
#include "Platform/System/Places.h"
#include "Tokwatch/Preferences/WidgetPreferences.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QFile>

namespace tokwatch {

WidgetStarter::WidgetStarter(WidgetPreferences& widgetPreferences,
                             const std::filesystem::path& dataHome,
                             const std::filesystem::path& home)
    : preferences(widgetPreferences), arguments{QStringLiteral("--data-dir"),
                                                QFile::decodeName(dataHome.c_str()),
                                                QStringLiteral("--home"),
                                                QFile::decodeName(home.c_str())},
      shownNotifier(preferences.shown.addNotifier([this] { startIfWanted(); })) {
    startIfWanted();
}

void WidgetStarter::startIfWanted() {
    if (!preferences.shown.peek()) return;
    const std::filesystem::path program = ourProgram("tokwatch-widget");
    if (kivo::startDetached(program, arguments)) return;
    systemLog("starting " + program.string() + " failed");
    preferences.shown = false; // so that no switch says otherwise
}

} // namespace tokwatch

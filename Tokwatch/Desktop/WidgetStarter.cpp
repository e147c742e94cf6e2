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
      shownNotifier(preferences.shown.addNotifier([this] {
          if (!startIfWanted() && !preferences.isReloading()) preferences.shown = false;
      })) {
    startIfWanted();
}

bool WidgetStarter::startIfWanted() {
    if (!preferences.shown.peek()) return true;
    const std::filesystem::path program = ourProgram("tokwatch-widget");
    if (kivo::startDetached(program, arguments)) return true;
    systemLog("starting " + program.string() + " failed");
    return false;
}

} // namespace tokwatch

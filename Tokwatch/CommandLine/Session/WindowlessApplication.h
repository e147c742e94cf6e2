#pragma once

#include "Platform/Linux/DesktopAlerts.h"
#include "Platform/Linux/DesktopBus.h"
#include "Platform/Linux/TerminationSignals.h"
#include "Tokwatch/App/Application.h"
#include "Tokwatch/CommandLine/CommandSurroundings.h"
#include "Tokwatch/CommandLine/Session/EventLoop.h"
#include "Tokwatch/Preferences/AlertPreferences.h"
#include "Tokwatch/Preferences/Preferences.h"

#include <functional>

namespace tokwatch {

/// The application without its windows, for the commands that show what it does until a signal ends
/// them. Needs an event loop that was made before.
class WindowlessApplication {
  public:
    explicit WindowlessApplication(const CommandSurroundings& surroundings);

    /// Returns once `EventLoop::end` is called, with its status. `onStart` is called as soon as
    /// what is stored is known.
    int run(
        EventLoop& loop, const std::function<void()>& onStart = [] {});

    AppModel& model() { return application.model(); }
    Scheduler& timers() { return application.timers(); }
    const Preferences& preferences() const { return userPreferences; }

  private:
    const UserPaths paths;
    TerminationSignals termination{[] { EventLoop::end(exitOk); }};
    Preferences userPreferences{settingsFile(settingsPath())};
    AlertPreferences alertPreferences{settingsFile(alertSettingsPath())};
    DesktopBus bus{QDBusConnection::sessionBus(), QDBusConnection::systemBus()};
    DesktopAlerts alertDisplay{bus.sessionBus()};
    Application application;
};

} // namespace tokwatch

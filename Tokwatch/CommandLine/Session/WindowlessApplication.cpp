#include "Tokwatch/CommandLine/Session/WindowlessApplication.h"

#include "Tokwatch/Alerts/LimitAlerts.h"

namespace tokwatch {
namespace {

Surroundings ofApplication(const CommandSurroundings& given) {
    Surroundings all = Surroundings::real(given.paths);
    all.calendar = given.calendar;
    all.now = given.now;
    return all;
}

} // namespace

WindowlessApplication::WindowlessApplication(const CommandSurroundings& surroundings)
    : paths(surroundings.paths),
      application(ofApplication(surroundings), WorkLease::Rank::follower, userPreferences, bus) {}

int WindowlessApplication::run(EventLoop& loop, const std::function<void()>& onStart) {
    userPreferences.followFile();
    alertPreferences.followFile();
    application.start();
    const LimitAlerts alerts({application.model(), alertPreferences, alertDisplay,
                              alertFileBeside(paths.database()), application.timers(),
                              application.runInBackground()});
    onStart();
    return loop.run();
}

} // namespace tokwatch

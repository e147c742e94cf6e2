#include "Tokwatch/CommandLine/StatusCommand.h"

#include "Tokwatch/CommandLine/Follower.h"
#include "Tokwatch/CommandLine/StoredLimits.h"
#include "Tokwatch/Preferences/Preferences.h"

#include <QSettings>

namespace tokwatch {

int runStatus(const CommandEnvironment& environment, const StatusOptions& options) {
    environment.requireHome();
    if (options.follow) return follow(environment, options.format);
    const std::unique_ptr<QSettings> settings = userSettings();
    const Preferences preferences(*settings);
    const LimitsByProvider limits = storedLimits(environment, *environment.openStoreForReading(),
                                                 preferences, preferences.enabledProviders());
    environment.terminal.line(
        statusLine(statusTitle(preferences, limits, environment.now()), options.format));
    return exitOk;
}

} // namespace tokwatch

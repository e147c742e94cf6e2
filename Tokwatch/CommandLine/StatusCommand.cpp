#include "Tokwatch/CommandLine/StoredCommands.h"
#include "Tokwatch/Preferences/PlainSettings.h"

namespace tokwatch {

int StoredCommands::run(const CommandSurroundings& surroundings, const StatuslineOptions& options) {
    return runStatusline(surroundings.paths, surroundings.json, options);
}

int StoredCommands::run(const CommandSurroundings& surroundings, const StatusOptions& options) {
    surroundings.requireHome();
    const PlainSettings settings = PlainSettings::ofUser();
    const LimitsByProvider limits = surroundings.limits(*surroundings.openStoreForReading(),
                                                        settings, settings.enabledProviders);
    const StatusTitle title =
        statusTitle(settings, limits, surroundings.now(), surroundings.runOuts(limits));
    surroundings.terminal.line(statusLine(title, options.format));
    return exitOk;
}

} // namespace tokwatch

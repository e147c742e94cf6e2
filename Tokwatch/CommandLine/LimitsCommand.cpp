#include "Tokwatch/CommandLine/LimitsPrinter.h"
#include "Tokwatch/CommandLine/StoredCommands.h"

namespace tokwatch {

int StoredCommands::run(const CommandSurroundings& surroundings, const LimitsOptions& options) {
    surroundings.requireHome();
    const PlainSettings settings = PlainSettings::ofUser();
    const std::vector<ProviderID> shown = providersAsked(settings, options.provider);
    const LimitsByProvider limits =
        surroundings.limits(*surroundings.openStoreForReading(), settings, shown);
    showLimits(surroundings, settings, limits, shown);
    if (limits.empty() && !surroundings.json)
        surroundings.terminal.line("tokwatch limits --refresh asks for them.");
    return exitOk;
}

} // namespace tokwatch

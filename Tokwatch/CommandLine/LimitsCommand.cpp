#include "Tokwatch/CommandLine/LimitsPrinter.h"
#include "Tokwatch/CommandLine/StoredCommands.h"

#include <algorithm>

namespace tokwatch {
namespace {

const char* wayToLimits(const std::vector<ProviderID>& shown) {
    if (shown.empty()) return "All assistants are switched off (disabledProviders).";
    const bool isAnyPublished = std::ranges::any_of(
        shown, [](ProviderID provider) { return traits(provider).publishesLimits; });
    return isAnyPublished ? "tokwatch limits --refresh asks for them." : "Nobody publishes them.";
}

} // namespace

int StoredCommands::run(const CommandSurroundings& surroundings, const LimitsOptions& options) {
    surroundings.requireHome();
    const PlainSettings settings = PlainSettings::ofUser();
    const std::vector<ProviderID> shown = providersAsked(settings, options.provider);
    const LimitsByProvider limits =
        surroundings.limits(*surroundings.openStoreForReading(), settings, shown);
    showLimits(surroundings, settings, limits, shown);
    if (limits.empty() && !surroundings.json) surroundings.terminal.line(wayToLimits(shown));
    return exitOk;
}

} // namespace tokwatch

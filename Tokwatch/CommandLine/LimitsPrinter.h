#pragma once

#include "Tokwatch/CommandLine/CommandSurroundings.h"
#include "Tokwatch/Display/StatusTitle.h"

#include <optional>
#include <vector>

namespace tokwatch {

/// The limits for people: a block a provider, with a bar, the reset, the pace and the forecast of
/// each window.
void printLimits(const CommandSurroundings& surroundings, const PlainSettings& settings,
                 const LimitsByProvider& limits, const std::vector<ProviderID>& order,
                 const RunOuts& runOuts);

/// The provider that was asked for, else all that are enabled.
std::vector<ProviderID> providersAsked(const PlainSettings& settings,
                                       std::optional<ProviderID> only);

/// The limits with their forecasts, as the options want them: for people or as JSON.
void showLimits(const CommandSurroundings& surroundings, const PlainSettings& settings,
                const LimitsByProvider& limits, const std::vector<ProviderID>& order);

} // namespace tokwatch

#pragma once

#include "Tokwatch/CommandLine/CommandSurroundings.h"
#include "Tokwatch/Display/StatusTitle.h"

#include <vector>

namespace tokwatch {

/// The limits for people: a block a provider, with a bar, the reset, the pace and the forecast of
/// each window.
void printLimits(const CommandSurroundings& surroundings, const Preferences& preferences,
                 const LimitsByProvider& limits, const std::vector<ProviderID>& order,
                 const RunOuts& runOuts);

} // namespace tokwatch

#pragma once

#include "Tokwatch/Display/StatusTitle.h"

#include <span>

namespace tokwatch {

class UsageStore;
struct CommandEnvironment;

/// The last known limits of these providers, as they are to be shown: Claude's by the preferences'
/// switch. A row that does not decode is one that is not there; CommandError when the store fails.
LimitsByProvider storedLimits(const CommandEnvironment& environment, UsageStore& store,
                              const Preferences& preferences,
                              std::span<const ProviderID> providers);

} // namespace tokwatch

#pragma once

#include "CommandEnvironment.h"

namespace tokwatch {

/// `tokwatch reread PROVIDER`
int runReread(const CommandEnvironment& environment, ProviderID provider);

} // namespace tokwatch

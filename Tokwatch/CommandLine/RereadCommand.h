#pragma once

#include "Tokwatch/CommandLine/CommandEnvironment.h"

namespace tokwatch {

/// `tokwatch reread PROVIDER`
int runReread(const CommandEnvironment& environment, ProviderID provider);

} // namespace tokwatch

#pragma once

#include "Tokwatch/CommandLine/CommandEnvironment.h"

namespace tokwatch {

/// `tokwatch snapshot`: the widgets' snapshot as the application last wrote it, as JSON.
int runSnapshot(const CommandEnvironment& environment);

} // namespace tokwatch

#pragma once

#include "Tokwatch/CommandLine/CommandEnvironment.h"
#include "Tokwatch/CommandLine/StatusLine.h"

namespace tokwatch {

/// Runs the application without its windows until a signal ends it (status 0) or nobody reads its
/// output any more (status 1): it indexes, watches, fetches, publishes, and writes the title's line
/// at once and at each change. Of several followers over one data directory one does the work, and
/// the others show what it stores; when it ends, another takes over.
int follow(const CommandEnvironment& environment, StatusFormat format);

} // namespace tokwatch

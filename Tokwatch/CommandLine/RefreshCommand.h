#pragma once

#include "Tokwatch/CommandLine/CommandEnvironment.h"

namespace tokwatch {

/// `tokwatch refresh`: asks the applications of this session to refresh.
int runRefresh(const CommandEnvironment& environment);

} // namespace tokwatch

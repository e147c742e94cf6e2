#pragma once

#include "Tokwatch/CommandLine/Terminal/Terminal.h"

namespace tokwatch {

/// Parses the command line and runs what it asks for; the process's exit status. A usage error is
/// one line on standard error and status 2.
int runCommandLine(int argc, const char* const* argv, Terminal& terminal);

} // namespace tokwatch

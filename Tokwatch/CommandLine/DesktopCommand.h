#pragma once

#include "Tokwatch/CommandLine/CommandEnvironment.h"

#include <string>
#include <vector>

namespace tokwatch {

/// `tokwatch` alone: becomes the desktop application, `tokwatch-desktop` beside this program, with
/// the same options. Returns only by CommandError: without a display, or where the desktop part is
/// not installed.
int runDesktop(const std::vector<std::string>& options);

} // namespace tokwatch

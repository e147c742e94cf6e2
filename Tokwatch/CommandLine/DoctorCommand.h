#pragma once

#include "CommandEnvironment.h"

namespace tokwatch {

/// `tokwatch doctor`: what was found where and what of it works. Status 1 when something is broken.
int runDoctor(const CommandEnvironment& environment);

} // namespace tokwatch

#pragma once

#include "Tokwatch/CommandLine/CommandEnvironment.h"
#include "Tokwatch/CommandLine/PrivacyExamination.h"

namespace tokwatch {

/// `tokwatch doctor`: what was found where and what of it works. Status 1 when something is broken.
/// What other users may read of the data is closed where that is wanted.
int runDoctor(const CommandEnvironment& environment, Closing closing);

} // namespace tokwatch

#pragma once

#include "Tokwatch/CommandLine/Terminal/Terminal.h"
#include "Tokwatch/Display/Severity.h"

namespace tokwatch {

/// The tone of what is left of a limit.
Tone severityTone(Severity severity);

} // namespace tokwatch

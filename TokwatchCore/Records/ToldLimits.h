#pragma once

#include "TokwatchCore/Records/LimitRecords.h"

namespace tokwatch {

/// Whether the numbers are those that the assistant itself told on this machine, and no answer to a
/// request: that needs no login, so it stays good without one, and says nothing about one.
bool isTold(const ProviderLimits& limits);

} // namespace tokwatch

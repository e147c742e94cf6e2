#pragma once

#include "Tokwatch/CommandLine/Terminal/Terminal.h"
#include "TokwatchCore/Records/ProviderID.h"

#include <optional>
#include <string>

namespace tokwatch {

/// The bars beside the numbers of usage compare rows with each other, so the largest share fills
/// its bar of 16 columns.
std::string usageBar(double share, double largest);

/// The tone of a provider's bars; of those that belong to none, cyan.
Tone usageTone(std::optional<ProviderID> provider);

} // namespace tokwatch

#pragma once

#include "Tokwatch/CommandLine/CommandEnvironment.h"
#include "TokwatchCore/Records/ProviderID.h"

#include <optional>

namespace tokwatch {

struct LimitsOptions {
    bool refresh = false;
    std::optional<ProviderID> provider; ///< all enabled ones when absent
};

/// `tokwatch limits`: what is stored, without any use of the network. With `refresh` the providers'
/// services are asked first, those of enabled assistants that are present here; CommandError when
/// afterwards there is nothing to show of any of them.
int runLimits(const CommandEnvironment& environment, const LimitsOptions& options);

} // namespace tokwatch

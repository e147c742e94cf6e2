#pragma once

#include "TokwatchCore/Limits/CredentialSource.h"
#include "TokwatchCore/Limits/HTTPClient.h"
#include "TokwatchCore/Limits/LimitsProvider.h"
#include "TokwatchCore/Records/ProviderID.h"

#include <filesystem>
#include <map>
#include <memory>

namespace tokwatch {

class LimitsCache;

/// The limits source of every provider, over the given seams. `codexAuthFile` is where Codex keeps
/// its login. (Shared, since a fetch under way may outlive its service.)
std::map<ProviderID, std::shared_ptr<LimitsProvider>> makeLimitsProviders(
    const std::shared_ptr<LimitsCache>& cache, const std::shared_ptr<CredentialSource>& credentials,
    const std::shared_ptr<HTTPClient>& http, const std::filesystem::path& codexAuthFile);

} // namespace tokwatch

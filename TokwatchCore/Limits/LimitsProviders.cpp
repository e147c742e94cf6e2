#include "TokwatchCore/Limits/LimitsProviders.h"

#include "TokwatchCore/Limits/ClaudeLimitsProvider.h"
#include "TokwatchCore/Limits/CodexLimitsProvider.h"
#include "TokwatchCore/Limits/CursorProvider.h"
#include "TokwatchCore/Limits/GrokLimitsProvider.h"

namespace tokwatch {

std::map<ProviderID, std::shared_ptr<LimitsProvider>>
makeLimitsProviders(std::shared_ptr<LimitsCache> cache,
                    std::shared_ptr<CredentialSource> credentials, std::shared_ptr<HTTPClient> http,
                    const std::filesystem::path& codexHome) {
    std::map<ProviderID, std::shared_ptr<LimitsProvider>> providers;
    const auto add = [&providers](std::shared_ptr<LimitsProvider> provider) {
        const ProviderID id = provider->id();
        providers.emplace(id, std::move(provider));
    };
    add(std::make_shared<ClaudeLimitsProvider>(credentials, http));
    add(std::make_shared<CodexLimitsProvider>(std::move(cache), credentials, http, codexHome));
    add(std::make_shared<GrokLimitsProvider>());
    add(std::make_shared<CursorProvider>());
    return providers;
}

} // namespace tokwatch

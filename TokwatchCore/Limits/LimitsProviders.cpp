#include "TokwatchCore/Limits/LimitsProviders.h"

#include "TokwatchCore/Limits/ClaudeLimitsProvider.h"
#include "TokwatchCore/Limits/CodexLimitsProvider.h"
#include "TokwatchCore/Limits/UsageEndpoint.h"

namespace tokwatch {
namespace {

/// For an assistant whose limits nobody can ask for: without any input or output.
class NoLimitsProvider final : public LimitsProvider {
  public:
    QCoro::Task<ProviderLimits> fetch(Date now) override {
        ProviderLimits limits = limitsWithout(ProviderStatus::unavailable, now);
        co_return limits;
    }
};

} // namespace

std::map<ProviderID, std::shared_ptr<LimitsProvider>> makeLimitsProviders(
    const std::shared_ptr<LimitsCache>& cache, const std::shared_ptr<CredentialSource>& credentials,
    const std::shared_ptr<HTTPClient>& http, const std::filesystem::path& codexAuthFile) {
    const auto make = [&](ProviderID provider) -> std::shared_ptr<LimitsProvider> {
        switch (provider) {
        case ProviderID::claude:
            return std::make_shared<ClaudeLimitsProvider>(credentials, http);
        case ProviderID::codex:
            return std::make_shared<CodexLimitsProvider>(cache, credentials, http, codexAuthFile);
        case ProviderID::grok:
        case ProviderID::cursor:
            break;
        }
        return std::make_shared<NoLimitsProvider>();
    };
    std::map<ProviderID, std::shared_ptr<LimitsProvider>> providers;
    for (const ProviderID provider : allCases<ProviderID>)
        providers.emplace(provider, make(provider));
    return providers;
}

} // namespace tokwatch

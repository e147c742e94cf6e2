#include "TokwatchCore/Limits/LimitsProviders.h"

#include "TokwatchCore/Limits/ClaudeLimitsProvider.h"
#include "TokwatchCore/Limits/CodexLimitsProvider.h"
#include "TokwatchCore/Limits/UsageEndpoint.h"

#include <algorithm>

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
    std::map<ProviderID, std::shared_ptr<LimitsProvider>> providers{
        {ProviderID::claude, std::make_shared<ClaudeLimitsProvider>(credentials, http)},
        {ProviderID::codex,
         std::make_shared<CodexLimitsProvider>(cache, credentials, http, codexAuthFile)}};
    static_assert(std::ranges::count(providerTable, true, &ProviderTraits::publishesLimits) == 2,
                  "each that publishes its limits has a source of them here");
    for (const ProviderID provider : allCases<ProviderID>)
        providers.try_emplace(provider, std::make_shared<NoLimitsProvider>());
    return providers;
}

} // namespace tokwatch

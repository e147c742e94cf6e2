#pragma once

#include "TokwatchCore/Limits/CredentialSource.h"
#include "TokwatchCore/Limits/HTTPClient.h"
#include "TokwatchCore/Limits/LimitsProvider.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

namespace tokwatch {

class LimitsCache;

/// The limits of a Codex user: those in the store, of the endpoint or read from Codex's logs by the
/// indexer, while they are at most ten minutes old and no failure; after that ChatGPT's usage
/// endpoint, asked with the login in Codex's own file. Stored windows take the place of a failure,
/// marked stale.
class CodexLimitsProvider final : public LimitsProvider {
  public:
    /// Without an HTTP client there are the stored numbers only.
    CodexLimitsProvider(std::shared_ptr<LimitsCache> cache,
                        std::shared_ptr<CredentialSource> credentials,
                        std::shared_ptr<HTTPClient> http, std::filesystem::path authFile);

    QCoro::Task<ProviderLimits> fetch(Date now) override;
    std::optional<Seconds> freshness() const override;

  private:
    std::shared_ptr<LimitsCache> cache;
    std::shared_ptr<CredentialSource> credentials;
    std::shared_ptr<HTTPClient> http;
    std::filesystem::path authFile;
};

/// When a JSON Web Token expires; absent when that cannot be read from it.
std::optional<Date> tokenExpiry(std::string_view token);

} // namespace tokwatch

#pragma once

#include "TokwatchCore/Limits/CredentialSource.h"
#include "TokwatchCore/Limits/HTTPClient.h"
#include "TokwatchCore/Limits/LimitsProvider.h"

#include <memory>

namespace tokwatch {

/// The limits of a Claude Code user: asks Claude's usage endpoint with the login that Claude Code
/// itself stored. Results carry the plan as soon as the login is read, failures too.
class ClaudeLimitsProvider final : public LimitsProvider {
  public:
    static constexpr const char* keychainService = "Claude Code-credentials";

    ClaudeLimitsProvider(std::shared_ptr<CredentialSource> credentials,
                         std::shared_ptr<HTTPClient> http);

    QCoro::Task<ProviderLimits> fetch(Date now) override;

  private:
    std::shared_ptr<CredentialSource> credentials;
    std::shared_ptr<HTTPClient> http;
};

} // namespace tokwatch

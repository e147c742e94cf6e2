#pragma once

#include "TokwatchCore/Limits/LimitsProvider.h"

namespace tokwatch {

/// Grok has no live limits: every fetch is `unavailable`, without any input or output.
class GrokLimitsProvider final : public LimitsProvider {
  public:
    ProviderID id() const override { return ProviderID::grok; }
    QCoro::Task<ProviderLimits> fetch(Date now) override;
};

} // namespace tokwatch

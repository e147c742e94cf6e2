#pragma once

#include "TokwatchCore/Limits/LimitsProvider.h"

namespace tokwatch {

/// For an assistant whose limits nobody can ask for: every fetch is `unavailable`, without any
/// input or output.
class NoLimitsProvider final : public LimitsProvider {
  public:
    QCoro::Task<ProviderLimits> fetch(Date now) override;
};

} // namespace tokwatch

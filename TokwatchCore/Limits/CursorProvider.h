#pragma once

#include "TokwatchCore/Limits/LimitsProvider.h"
#include "TokwatchCore/Records/UsageEvent.h"

#include <vector>

namespace tokwatch {

/// Cursor is only detected: every fetch is `unavailable`, without any input or output, and there is
/// no usage to count yet.
class CursorProvider final : public LimitsProvider {
  public:
    ProviderID id() const override { return ProviderID::cursor; }
    QCoro::Task<ProviderLimits> fetch(Date now) override;

    /// What the indexer counts of Cursor at the end of each pass.
    std::vector<UsageEvent> usage() const { return {}; }
};

} // namespace tokwatch

#pragma once

#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Support/Date.h"

#include <QCoroTask>

namespace tokwatch {

/// A source of one provider's limits. Used on the main thread; fetches may overlap, and one that is
/// under way may outlive its provider.
class LimitsProvider {
  public:
    virtual ~LimitsProvider() = default;

    /// The limits as of now: `fetchedAt` is `now`, but of what the assistant wrote into its logs
    /// lately and nobody had to be asked for. Never throws: a failure is the result's status,
    /// normally without windows.
    virtual QCoro::Task<ProviderLimits> fetch(Date now) = 0;
};

} // namespace tokwatch

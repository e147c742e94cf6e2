#pragma once

#include "TokwatchCore/Limits/BackgroundQueue.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Records/ProviderID.h"

#include <QFuture>

#include <memory>
#include <optional>

namespace tokwatch {

class UsageStore;

/// The last known limits, in the usage store, for those who must not wait for it: a writer of
/// another process may hold the database for seconds, and a pass over the logs the store itself.
/// Reads and writes happen in the order of asking.
class LimitsCache {
  public:
    LimitsCache(std::shared_ptr<UsageStore> store, RunInBackground run);

    /// Absent also where the row cannot be read.
    QFuture<std::optional<ProviderLimits>> limits(ProviderID provider);
    /// A result that cannot be stored is lost; the next one is stored again.
    QFuture<void> setLimits(ProviderLimits limits, ProviderID provider);
    /// Stores an attempt that brought no numbers but such as were stored before it, if any, beside
    /// those that are stored, and answers what is there then. At once, so that numbers which a pass
    /// over the logs stores meanwhile are neither lost nor missed.
    QFuture<ProviderLimits> setUnanswered(ProviderLimits unanswered, ProviderID provider);

  private:
    std::shared_ptr<UsageStore> store;
    BackgroundQueue queue;
};

} // namespace tokwatch

#pragma once

#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Support/Date.h"

#include <QCoroTask>

#include <optional>

namespace tokwatch {

/// A source of one provider's limits. Used on the main thread; fetches may overlap, and one that is
/// under way may outlive its provider.
class LimitsProvider {
  public:
    virtual ~LimitsProvider() = default;

    /// The limits as of now: `fetchedAt` is `now`, but of numbers that were stored before, fresh
    /// ones that spare the question and such as stand in, marked stale, where it failed. Never
    /// throws: a failure is the result's status, normally without windows.
    virtual QCoro::Task<ProviderLimits> fetch(Date now) = 0;

    /// How old stored numbers may be to pass for what `fetch` would bring, where that is another
    /// time than between two fetches.
    virtual std::optional<Seconds> freshness() const { return std::nullopt; }
};

} // namespace tokwatch

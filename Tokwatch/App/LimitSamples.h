#pragma once

#include "TokwatchCore/Limits/BackgroundQueue.h"
#include "TokwatchCore/Records/LimitSample.h"

#include <QCoroTask>
#include <QProperty>

#include <memory>

namespace tokwatch {

class LimitHistory;

/// The samples of the limits' running windows, as an observable. Main thread only, which does not
/// wait for the database.
class LimitSamples {
  public:
    /// Without a history there are no samples.
    LimitSamples(std::shared_ptr<LimitHistory> history, RunInBackground run);

    const SamplesByProvider& known() const { return state.value(); }

    /// Takes those of these limits' windows; where they cannot be read, what is known stays.
    QCoro::Task<> read(LimitsByProvider limits, Date now);

  private:
    struct Life {};

    std::shared_ptr<LimitHistory> history;
    BackgroundQueue queue;
    QProperty<SamplesByProvider> state;
    std::shared_ptr<Life> life = std::make_shared<Life>(); ///< lets what outlives this notice
};

} // namespace tokwatch

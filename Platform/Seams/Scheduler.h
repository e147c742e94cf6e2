#pragma once

#include "TokwatchCore/Support/Date.h"

#include <functional>
#include <memory>

namespace tokwatch {

/// A call that is yet to come. Destroying it cancels the call; the call may do that itself.
class ScheduledCall {
  public:
    virtual ~ScheduledCall() = default;
};

/// Timers. Calls come on the thread that asked for them, from its event loop, never before their
/// time and never from within `after` or `every`. Times run on while the wall clock is set, and
/// stand still while the machine sleeps.
class Scheduler {
  public:
    virtual ~Scheduler() = default;

    /// Calls once, `delay` from now; at the next turn of the loop when it is not positive.
    [[nodiscard]] virtual std::unique_ptr<ScheduledCall> after(Seconds delay,
                                                               std::function<void()> call) = 0;
    /// Calls each `period` from now on. `period` is positive.
    [[nodiscard]] virtual std::unique_ptr<ScheduledCall> every(Seconds period,
                                                               std::function<void()> call) = 0;
};

} // namespace tokwatch

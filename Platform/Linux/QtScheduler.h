#pragma once

#include "Platform/Seams/Scheduler.h"

namespace tokwatch {

/// Timers of the thread's Qt event loop, in milliseconds. A delay beyond 24 days fires at 24 days.
class QtScheduler final : public Scheduler {
  public:
    std::unique_ptr<ScheduledCall> after(Seconds delay, std::function<void()> call) override;
    std::unique_ptr<ScheduledCall> every(Seconds period, std::function<void()> call) override;
};

} // namespace tokwatch

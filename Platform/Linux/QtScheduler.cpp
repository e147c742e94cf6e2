#include "Platform/Linux/QtScheduler.h"

#include <QTimer>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tokwatch {
namespace {

class TimerCall final : public ScheduledCall {
  public:
    TimerCall(Seconds delay, bool repeats, std::function<void()> call) {
        // Coarse timers may fire early by a twentieth, which the rules of spacing would answer with
        // a second timer for the rest.
        timer.setTimerType(Qt::PreciseTimer);
        timer.setSingleShot(!repeats);
        QObject::connect(&timer, &QTimer::timeout, &timer, std::move(call));
        timer.start(milliseconds(delay));
    }

  private:
    static int milliseconds(Seconds delay) {
        constexpr double most = std::numeric_limits<int>::max();
        return static_cast<int>(std::clamp(std::ceil(delay.count() * 1000), 0.0, most));
    }

    QTimer timer;
};

} // namespace

std::unique_ptr<ScheduledCall> QtScheduler::after(Seconds delay, std::function<void()> call) {
    return std::make_unique<TimerCall>(delay, false, std::move(call));
}

std::unique_ptr<ScheduledCall> QtScheduler::every(Seconds period, std::function<void()> call) {
    return std::make_unique<TimerCall>(period, true, std::move(call));
}

} // namespace tokwatch

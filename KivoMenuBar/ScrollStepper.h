#pragma once

#include <chrono>

namespace kivo {

/// Turns wheel motion into whole steps, one for each notch. Small motions add up within a gesture;
/// a pause or a change of direction begins a new one.
class ScrollStepper {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;
    static constexpr std::chrono::milliseconds gestureGap{300};

    /// Steps that this motion completes, with the motion's sign. `delta` is as hosts send it:
    /// either 120 a notch, in fractions of it for fine wheels, or 1 a notch.
    int steps(int delta, TimePoint now);

  private:
    double accumulated = 0; ///< notches of this gesture
    int spent = 0;          ///< steps given out for them
    TimePoint lastEvent{};
};

} // namespace kivo

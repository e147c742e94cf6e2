#pragma once

#include <chrono>

namespace kivo {

/// Turns wheel motion into whole steps, one for each notch. Small motions add up within a gesture;
/// a pause or a change of direction begins a new one.
class ScrollStepper {
  public:
    using Seconds = std::chrono::duration<double>;
    /// A pause longer than this ends a gesture.
    static constexpr Seconds gestureGap{0.3};

    /// Steps that this motion completes, with the motion's sign. `delta` is as hosts send it:
    /// either 120 a notch, in fractions of it for fine wheels, or 1 a notch. `now` counts from any
    /// fixed moment.
    int steps(int delta, Seconds now);

  private:
    double accumulated = 0; ///< notches of this gesture
    int spent = 0;          ///< steps given out for them
    Seconds lastEvent{0};
};

} // namespace kivo

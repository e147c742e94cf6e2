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

    /// Steps that this motion completes, positive downwards. `delta` is as the host sends it, and
    /// `notch` what it sends for one notch down (`StatusArea::wheelNotch`); with 0, deltas are
    /// taken for Qt's, 120 a notch and positive upwards, or for notches when they are that small.
    /// `now` counts from any fixed moment.
    int steps(int delta, int notch, Seconds now);

  private:
    double accumulated = 0; ///< notches of this gesture
    int spent = 0;          ///< steps given out for them
    Seconds lastEvent{0};
};

} // namespace kivo

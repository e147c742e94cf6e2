#include "KivoMenuBar/ScrollStepper.h"

#include <algorithm>
#include <cmath>

namespace kivo {
namespace {

constexpr int unitsPerNotch = 120;
// Hosts that count notches put a few at most into one event; fine wheels send at least this much.
constexpr int smallestFraction = 8;
/// Of one motion: no wheel turns that far, but anybody on the bus can say so.
constexpr double mostNotches = 1000;
/// Of a gesture, within what counts steps.
constexpr double longestGesture = 1e9;

double notchesDown(int delta, int notch) {
    const double units = delta;
    if (notch == 0) notch = std::abs(units) < smallestFraction ? 1 : -unitsPerNotch;
    return std::clamp(units / notch, -mostNotches, mostNotches);
}

} // namespace

int ScrollStepper::steps(int delta, int notch, Seconds now) {
    const double motion = notchesDown(delta, notch);
    if (now - lastEvent > gestureGap || motion * accumulated < 0) {
        accumulated = 0;
        spent = 0;
    }
    lastEvent = now;
    accumulated = std::clamp(accumulated + motion, -longestGesture, longestGesture);
    const int reached = static_cast<int>(std::trunc(accumulated));
    const int fresh = reached - spent;
    spent = reached;
    return fresh;
}

} // namespace kivo

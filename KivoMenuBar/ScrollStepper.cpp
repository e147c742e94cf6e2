#include "KivoMenuBar/ScrollStepper.h"

#include <cmath>
#include <cstdlib>

namespace kivo {
namespace {

constexpr int unitsPerNotch = 120;
// Hosts that count notches put a few at most into one event; fine wheels send at least this much.
constexpr int smallestFraction = 8;

double notchesDown(int delta, int notch) {
    if (notch == 0) notch = std::abs(delta) < smallestFraction ? 1 : -unitsPerNotch;
    return static_cast<double>(delta) / notch;
}

} // namespace

int ScrollStepper::steps(int delta, int notch, Seconds now) {
    const double motion = notchesDown(delta, notch);
    if (now - lastEvent > gestureGap || motion * accumulated < 0) {
        accumulated = 0;
        spent = 0;
    }
    lastEvent = now;
    accumulated += motion;
    const int reached = static_cast<int>(std::trunc(accumulated));
    const int fresh = reached - spent;
    spent = reached;
    return fresh;
}

} // namespace kivo

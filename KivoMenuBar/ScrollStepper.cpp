#include "KivoMenuBar/ScrollStepper.h"

#include <cmath>
#include <cstdlib>

namespace kivo {
namespace {

constexpr double unitsPerNotch = 120;
// Hosts that count notches put a few at most into one event; fine wheels send at least this much.
constexpr int smallestFraction = 8;

double notches(int delta) {
    return std::abs(delta) < smallestFraction ? delta : delta / unitsPerNotch;
}

} // namespace

int ScrollStepper::steps(int delta, Seconds now) {
    const double motion = notches(delta);
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

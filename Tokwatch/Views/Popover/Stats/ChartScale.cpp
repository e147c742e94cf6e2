#include "Tokwatch/Views/Popover/Stats/ChartScale.h"

#include <array>
#include <cmath>

namespace tokwatch {
namespace {

constexpr double mostTicks = 3;
/// What division leaves of a whole number.
constexpr double tolerance = 1e-9;

double ticksFor(double most, double step) {
    return std::ceil(most / step - tolerance);
}

bool isMultiple(double step, double smallest) {
    const double quotient = step / smallest;
    return std::abs(quotient - std::round(quotient)) < tolerance * quotient;
}

} // namespace

ChartScale ChartScale::reaching(double most, double smallest) {
    if (!(most > 0) || !std::isfinite(most)) return {};
    double magnitude = smallest;
    while (ticksFor(most, magnitude * 10) > mostTicks)
        magnitude *= 10;
    ChartScale scale;
    for (const double round : std::array{1.0, 2.0, 2.5, 5.0, 10.0}) {
        scale.step = round * magnitude;
        if (isMultiple(scale.step, smallest) && ticksFor(most, scale.step) <= mostTicks) break;
    }
    for (int tick = 1; tick <= ticksFor(most, scale.step); ++tick)
        scale.ticks.push_back(tick * scale.step);
    return scale;
}

} // namespace tokwatch

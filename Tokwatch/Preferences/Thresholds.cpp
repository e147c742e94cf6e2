#include "Tokwatch/Preferences/Thresholds.h"

#include <algorithm>
#include <cmath>

namespace tokwatch {
namespace {

/// The lower bound for anything that is not above it.
double atLeast(double bound, double value) {
    return value > bound ? value : bound;
}

} // namespace

double Thresholds::highestCritical(double warning) {
    // As people write it: 0.15 less 0.05 is 0.1 and not 0.09999999999999999.
    constexpr double digits = 1e9;
    return std::round((warning - gap) * digits) / digits;
}

double Thresholds::acceptedWarning(double wanted) {
    return atLeast(lowestWarning, wanted);
}

double Thresholds::acceptedCritical(double wanted, double warning) {
    return std::min(atLeast(lowestCritical, wanted), highestCritical(warning));
}

} // namespace tokwatch

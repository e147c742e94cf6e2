#pragma once

#include <vector>

namespace tokwatch {

/// The marks of a value axis that begins at zero.
struct ChartScale {
    std::vector<double> ticks; ///< above zero, evenly spaced, the last one the axis's top
    double step = 0;           ///< a round number: 1, 2, 2.5 or 5 times a power of ten

    double top() const { return ticks.empty() ? 0 : ticks.back(); }

    /// Two or three ticks that reach `most`; a single one where `most` is about the smallest amount
    /// that can be told apart, none where there is nothing to show. Steps are multiples of
    /// `smallest`.
    static ChartScale reaching(double most, double smallest);
};

} // namespace tokwatch

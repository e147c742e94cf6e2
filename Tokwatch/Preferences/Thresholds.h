#pragma once

namespace tokwatch {

/// The fractions of a limit left from which on it is little, and what they may be: critical always
/// stays below warning.
struct Thresholds {
    static constexpr double lowestWarning = 0.1;
    static constexpr double lowestCritical = 0.05;
    /// The least that lies between the two.
    static constexpr double gap = 0.05;

    double warning = 0.25;
    double critical = 0.1;

    static double highestCritical(double warning);
    /// The wanted values, brought into their bounds; the lower one for what is not a number.
    static double acceptedWarning(double wanted);
    static double acceptedCritical(double wanted, double warning);

    friend bool operator==(const Thresholds&, const Thresholds&) = default;
};

} // namespace tokwatch

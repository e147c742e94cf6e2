#pragma once

#include <string_view>

namespace tokwatch {

/// How close a limit is to running out; drives tints and tones.
enum class Severity { normal, warning, critical };

/// "normal", "warning", "critical".
std::string_view nameOf(Severity severity);

/// By the fraction left and the fractions from which on it is little.
Severity severityOf(double left, double warningThreshold, double criticalThreshold);

} // namespace tokwatch

#include "Tokwatch/Display/Severity.h"

#include "TokwatchCore/Presentation/LimitBarModel.h"

namespace tokwatch {

std::string_view nameOf(Severity severity) {
    switch (severity) {
    case Severity::normal:
        return "normal";
    case Severity::warning:
        return "warning";
    case Severity::critical:
        return "critical";
    }
    return "";
}

Severity severityOf(double left, double warningThreshold, double criticalThreshold) {
    if (isAtOrBelow(left, criticalThreshold)) return Severity::critical;
    if (isAtOrBelow(left, warningThreshold)) return Severity::warning;
    return Severity::normal;
}

} // namespace tokwatch

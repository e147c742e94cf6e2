#include "TokwatchCore/Presentation/Pace.h"

namespace tokwatch {

std::string_view symbolName(Pace pace) {
    switch (pace) {
    case Pace::under:
        return "gauge.with.dots.needle.33percent";
    case Pace::onPace:
        return "gauge.with.dots.needle.50percent";
    case Pace::over:
        return "chart.line.downtrend.xyaxis";
    case Pace::unknown:
        break;
    }
    return "";
}

std::string_view caption(Pace pace) {
    switch (pace) {
    case Pace::under:
        return "Using less than the time elapsed";
    case Pace::onPace:
        return "On pace to last until the reset";
    case Pace::over:
        return "Using faster than the time elapsed";
    case Pace::unknown:
        break;
    }
    return "";
}

} // namespace tokwatch

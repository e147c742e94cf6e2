#include "TokwatchCore/Presentation/WindowLabel.h"

#include "TokwatchCore/Support/PlainText.h"

#include <cmath>
#include <cstdio>

namespace tokwatch {

std::string windowLabel(const LimitWindow& window) {
    constexpr double day = 86'400;
    const double days = std::round(window.duration.value_or(0) / day);
    if (window.id != "session" || !(window.duration >= day) || !std::isfinite(days))
        return plainText(window.label);
    char text[32];
    std::snprintf(text, sizeof text, days == 1 ? " · %.0f day" : " · %.0f days", days);
    return plainText(window.label) + text;
}

} // namespace tokwatch

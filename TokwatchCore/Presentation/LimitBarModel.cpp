#include "TokwatchCore/Presentation/LimitBarModel.h"

#include "TokwatchCore/Presentation/MeterFormat.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <algorithm>
#include <cmath>

namespace tokwatch {
namespace {

/// Use may run this far ahead of time before it counts as too fast …
constexpr double overuseTolerance = 0.05;
/// … and this far behind before it counts as slow.
constexpr double underuseTolerance = 0.15;

std::string percentText(double fraction) {
    const double percent = wholePercent(fraction);
    // The bound is 2^63, the first double beyond the range.
    if (!std::isfinite(percent) || std::abs(percent) >= 9223372036854775808.0)
        fatal("a limit's fraction is not a number that can be shown");
    return std::to_string(static_cast<std::int64_t>(percent)) + "%";
}

Pace paceOf(double used, double elapsed) {
    if (used > elapsed + overuseTolerance + fractionTolerance) return Pace::over;
    return used >= elapsed - underuseTolerance - fractionTolerance ? Pace::onPace : Pace::under;
}

} // namespace

bool isAtOrBelow(double left, double threshold) {
    return left <= threshold + fractionTolerance;
}

double wholePercent(double fraction) {
    return std::trunc((fraction + std::copysign(fractionTolerance, fraction)) * 100);
}

LimitBarModel::LimitBarModel(const LimitWindow& window, Date now) {
    if (window.resetsAt && *window.resetsAt <= now) {
        leftFraction = 1;
        percentLeftText = "100%";
        resetText = "now";
        return;
    }
    leftFraction = 1 - window.usedFraction;
    percentLeftText = percentText(leftFraction);
    if (!window.resetsAt) return;
    const double remaining = Seconds(*window.resetsAt - now).count();
    resetText = MeterFormat::duration(remaining);
    if (!window.duration || *window.duration <= 0) return;
    timeLeftFraction = std::clamp(remaining / *window.duration, 0.0, 1.0);
    pace = paceOf(window.usedFraction, 1 - *timeLeftFraction);
}

} // namespace tokwatch

#include "TokwatchCore/Presentation/Forecast.h"

#include "TokwatchCore/Presentation/LimitBarModel.h"

#include <algorithm>

namespace tokwatch {
namespace {

constexpr Seconds leastWatched{20 * 60};
constexpr std::size_t leastObservations = 3;

} // namespace

std::optional<Forecast> forecast(const BurnUp& course, Date now) {
    return forecastAt(speedBetween(course.points.front(), course.points.back()), course, now);
}

std::optional<Forecast> forecastAt(double speed, const BurnUp& course, Date now) {
    if (course.observations < leastObservations || course.watched < leastWatched)
        return std::nullopt;
    const BurnUp::Point& present = course.points.back();
    const double left = 1 - present.usedFraction;
    if (isAtOrBelow(left, 0) || !(speed > 0)) return std::nullopt;
    const Seconds remaining = course.resetsAt - present.moment;
    const Seconds lasting{left / speed};
    const bool isToLast = course.pace == Pace::under || course.pace == Pace::onPace;
    if (lasting < remaining && !isToLast)
        return Forecast{std::max(now, present.moment + lasting), 1};
    return Forecast{std::nullopt, std::min(present.usedFraction + speed * remaining.count(), 1.0)};
}

double speedBetween(const BurnUp::Point& from, const BurnUp::Point& to) {
    const double seconds = Seconds(to.moment - from.moment).count();
    return seconds > 0 ? (to.usedFraction - from.usedFraction) / seconds : 0;
}

} // namespace tokwatch

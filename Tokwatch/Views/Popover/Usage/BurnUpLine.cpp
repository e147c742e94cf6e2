#include "Tokwatch/Views/Popover/Usage/BurnUpLine.h"

#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Views/Common/Text.h"

#include <algorithm>

namespace tokwatch {

BurnUpLine BurnUpLine::of(const BurnUp& course, const std::optional<Forecast>& forecast, Date now,
                          const Calendar& calendar) {
    const Seconds length = course.resetsAt - course.begin;
    const auto at = [&](Date moment, double usedFraction) {
        const double time = Seconds(moment - course.begin) / length;
        return QPointF(std::clamp(time, 0.0, 1.0), std::clamp(usedFraction, 0.0, 1.0));
    };
    // A number holds until it is seen to be another. What was before the first sample is anybody's
    // guess, and a straight line the plainest.
    const bool beginsWithAGuess = course.points.size() > course.observations;
    BurnUpLine line;
    for (const BurnUp::Point& point : course.points) {
        const QPointF next = at(point.moment, point.usedFraction);
        const bool isStraight = line.used.size() < (beginsWithAGuess ? 2 : 1);
        if (!isStraight) line.used.append({next.x(), line.used.back().y()});
        line.used.append(next);
    }
    if (forecast)
        line.forecast = {line.used.back(), at(forecast->usedUpAt.value_or(course.resetsAt),
                                              forecast->usedUpAt ? 1 : forecast->usedAtReset)};
    line.beginText = text(DayFormat::moment(course.begin, now, calendar));
    line.endText = text(DayFormat::coming(course.resetsAt, now, calendar));
    return line;
}

} // namespace tokwatch

#include "moc_BurnUpLine.cpp"

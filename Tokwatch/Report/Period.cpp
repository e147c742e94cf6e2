#include "Tokwatch/Report/Period.h"

#include "TokwatchCore/Support/ISO8601.h"

#include <algorithm>
#include <cmath>

namespace tokwatch {
namespace {

constexpr Seconds minute{60};
constexpr Seconds hour{3600};
constexpr Seconds halfADay{12 * 3600.0};

/// From the start of one day to that of another, by their distance from the day of `moment`.
Period days(Date moment, int first, int end, const Calendar& calendar) {
    const Date day = calendar.startOfDay(moment);
    return {calendar.startOfDay(calendar.addingDays(day, first)),
            calendar.startOfDay(calendar.addingDays(day, end))};
}

} // namespace

Period hourHolding(Date moment, const Calendar& calendar) {
    // Zones differ by whole minutes.
    const Date start = dateFromUnixSeconds(std::floor(unixSeconds(moment) / 60) * 60) -
                       calendar.fields(moment).minute * minute;
    return {start, start + hour};
}

Period dayHolding(Date moment, const Calendar& calendar) {
    return days(moment, 0, 1, calendar);
}

Period lastDays(int count, Date now, const Calendar& calendar) {
    return {calendar.daysEnding(now, std::max(count, 1)).front(), dayHolding(now, calendar).end};
}

std::optional<Period> dayNamed(std::string_view key, const Calendar& calendar) {
    const std::optional<Date> noon = parseISO8601(std::string(key) + "T12:00:00Z");
    if (!noon) return std::nullopt;
    // Far east of Greenwich its noon is in the day after.
    for (const Seconds distance : {Seconds{0}, -halfADay, halfADay}) {
        if (calendar.dayKey(*noon + distance) == key) return dayHolding(*noon + distance, calendar);
    }
    return std::nullopt;
}

Period weekHolding(Date moment, const Calendar& calendar) {
    const int weekday = calendar.fields(moment).weekday;
    return days(moment, -weekday, 7 - weekday, calendar);
}

Period monthHolding(Date moment, const Calendar& calendar) {
    const int day = calendar.fields(moment).day;
    // No month has more than 31 days, and the next one has begun by then.
    const int past = calendar.fields(calendar.addingDays(moment, 32 - day)).day;
    return days(moment, 1 - day, 33 - day - past, calendar);
}

} // namespace tokwatch

#pragma once

#include "TokwatchCore/Support/Calendar.h"

#include <optional>
#include <string>

namespace tokwatch {

/// Days in English, whatever the user's locale, as all other texts are.
struct DayFormat {
    /// "Tue, Nov 24"
    static std::string weekdayAndDay(Date date, const Calendar& calendar);
    /// "Nov 24"
    static std::string day(Date date, const Calendar& calendar);
    /// "November 2026"
    static std::string month(Date date, const Calendar& calendar);
    /// "14:02"
    static std::string clock(Date date, const Calendar& calendar);
    /// "14:02" of today, else "Nov 24, 14:02".
    static std::string moment(Date date, Date now, const Calendar& calendar);
    /// A moment to come, to the nearest minute: "14:02" of today, "Fri 14:02" within the week to
    /// come, else "Nov 24, 14:02".
    static std::string coming(Date date, Date now, const Calendar& calendar);
    /// "Tuesday, November 24, 2026": for screen readers.
    static std::string spoken(Date date, const Calendar& calendar);
};

/// Moments as people say them, in English like all texts.
struct TimeTexts {
    /// "just now", "5 min ago", "3 h ago", "Nov 23, 14:02".
    static std::string age(Date moment, Date now, const Calendar& calendar);
    /// "24 s", "5 min": what is left until a moment that is not hours away.
    static std::string remaining(Date moment, Date now);
    /// "Updated 5 min ago · limits 7 h ago", without what is unknown.
    static std::string updated(std::optional<Date> usage, std::optional<Date> limits, Date now,
                               const Calendar& calendar);
};

} // namespace tokwatch

#pragma once

#include "Calendar.h"

#include <string>

namespace tokwatch {

/// Days in English, whatever the user's locale, as all other texts are.
struct DayFormat {
    /// "Tue, Nov 24"
    static std::string weekdayAndDay(Date date, const Calendar& calendar);
    /// "Nov 24"
    static std::string day(Date date, const Calendar& calendar);
    /// "Tuesday, November 24, 2026": for screen readers.
    static std::string spoken(Date date, const Calendar& calendar);
};

} // namespace tokwatch

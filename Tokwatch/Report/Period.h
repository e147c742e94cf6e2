#pragma once

#include "TokwatchCore/Support/Calendar.h"
#include "TokwatchCore/Support/Date.h"

#include <optional>
#include <string>
#include <string_view>

namespace tokwatch {

/// A span of time [start, end).
struct Period {
    Date start;
    Date end;
    bool holds(Date moment) const { return moment >= start && moment < end; }
    friend bool operator==(const Period&, const Period&) = default;
};

// The parts of the user's calendar that hold a moment. Weeks begin on Mondays.
Period hourHolding(Date moment, const Calendar& calendar);
Period dayHolding(Date moment, const Calendar& calendar);
/// The last so many days, at least one; today is the last of them.
Period lastDays(int count, Date now, const Calendar& calendar);
/// The day that is written so: "2026-01-31"; none where the calendar has no such day.
std::optional<Period> dayNamed(std::string_view key, const Calendar& calendar);
Period weekHolding(Date moment, const Calendar& calendar);
Period monthHolding(Date moment, const Calendar& calendar);

} // namespace tokwatch

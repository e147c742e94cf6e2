#pragma once

#include "Calendar.h"

#include <QString>

#include <optional>

namespace tokwatch {

/// Moments as people say them, in English like all texts.
struct TimeTexts {
    /// "Updated just now", "Updated 5 min ago", "Updated 3 h ago", "Updated Nov 23, 14:02"; empty
    /// when there was none.
    static QString updated(std::optional<Date> moment, Date now, const Calendar& calendar);
    /// "14:02" of today, else "Nov 23, 14:02".
    static QString moment(Date moment, Date now, const Calendar& calendar);
};

} // namespace tokwatch

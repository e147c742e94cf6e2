#pragma once

#include "TokwatchCore/Support/Calendar.h"

#include <string>

namespace tokwatch {

/// Moments as people say them, in English like all texts.
struct TimeTexts {
    /// "just now", "5 min ago", "3 h ago", "Nov 23, 14:02".
    static std::string age(Date moment, Date now, const Calendar& calendar);
    /// "24 s", "5 min": what is left until a moment that is not hours away.
    static std::string remaining(Date moment, Date now);
};

} // namespace tokwatch

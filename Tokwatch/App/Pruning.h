#pragma once

#include "TokwatchCore/Support/Calendar.h"
#include "TokwatchCore/Support/Date.h"

#include <optional>
#include <string>

namespace tokwatch {

/// A moment in the last day that is deleted when so many days are kept before the present, or
/// before the last day with usage where that is earlier: a clock that is a year ahead for an hour
/// must not empty the store. `newestDay` as "2025-01-31".
Date pruneLimit(Date now, const std::optional<std::string>& newestDay, int keptDays,
                const Calendar& calendar);

} // namespace tokwatch

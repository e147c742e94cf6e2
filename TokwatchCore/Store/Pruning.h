#pragma once

#include "TokwatchCore/Support/Calendar.h"
#include "TokwatchCore/Support/Date.h"

#include <optional>
#include <string>

namespace tokwatch {

/// So many days before the present one the store keeps.
inline constexpr int keptDays = 90;

/// A moment in the first day that is kept, so many days before the present one, or before the last
/// day with usage where that is earlier: a clock that is a year ahead for an hour must not empty
/// the store. `newestDay` as "2025-01-31".
Date pruneLimit(Date now, const std::optional<std::string>& newestDay, const Calendar& calendar);

} // namespace tokwatch

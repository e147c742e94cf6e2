#pragma once

#include "TokwatchCore/Support/Date.h"

#include <optional>
#include <string>
#include <string_view>

namespace tokwatch {

/// Parses an internet date-time: "YYYY-MM-DDTHH:MM:SS", an optional fraction, then
/// "Z" or an offset "±HH:MM" ("±HHMM" too). No other text around it. Absent when the text is not
/// one. Called for every countable log line, hence no locale, no allocation.
std::optional<Date> parseISO8601(std::string_view text);

/// "2026-01-31T23:59:59Z": whole seconds in UTC, rounded down, within the years 0 to 9999.
std::string formatISO8601(Date date);

} // namespace tokwatch

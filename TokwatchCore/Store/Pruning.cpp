#include "TokwatchCore/Store/Pruning.h"

#include "TokwatchCore/Support/ISO8601.h"

#include <algorithm>

namespace tokwatch {
namespace {

/// A moment in the day of this key.
std::optional<Date> momentOf(const std::string& key, const Calendar& calendar) {
    const std::optional<Date> noon = parseISO8601(key + "T12:00:00Z"); // UTC's, not the zone's
    if (!noon) return std::nullopt;
    const std::string there = calendar.dayKey(*noon);
    if (there == key) return noon;
    return calendar.addingDays(*noon, there < key ? 1 : -1);
}

} // namespace

Date pruneLimit(Date now, const std::optional<std::string>& newestDay, const Calendar& calendar) {
    const std::optional<Date> newest =
        newestDay ? momentOf(*newestDay, calendar) : std::optional<Date>();
    return calendar.addingDays(newest ? std::min(now, *newest) : now, -keptDays);
}

} // namespace tokwatch

#include "Tokwatch/Display/TimeTexts.h"

#include "Tokwatch/Display/DayFormat.h"

#include <cmath>

namespace tokwatch {
namespace {

std::string whole(double number) {
    return std::to_string(static_cast<std::int64_t>(number));
}

} // namespace

std::string TimeTexts::age(Date moment, Date now, const Calendar& calendar) {
    const double seconds = Seconds(now - moment).count();
    // A clock that was set back makes the moment lie ahead: that is as good as now.
    if (seconds < 60) return "just now";
    if (seconds < 3600) return whole(seconds / 60) + " min ago";
    if (seconds < 86'400) return whole(seconds / 3600) + " h ago";
    return DayFormat::moment(moment, now, calendar);
}

std::string TimeTexts::remaining(Date moment, Date now) {
    const double seconds = std::ceil(Seconds(moment - now).count());
    return seconds < 60 ? whole(seconds) + " s" : whole(std::ceil(seconds / 60)) + " min";
}

} // namespace tokwatch

#include "Tokwatch/Views/Common/TimeTexts.h"

#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Views/Common/Text.h"

#include <cmath>

namespace tokwatch {

QString TimeTexts::age(Date moment, Date now, const Calendar& calendar) {
    const double seconds = Seconds(now - moment).count();
    // A clock that was set back makes the moment lie ahead: that is as good as now.
    if (seconds < 60) return QStringLiteral("just now");
    if (seconds < 3600) return QString("%1 min ago").arg(static_cast<int>(seconds / 60));
    if (seconds < 86'400) return QString("%1 h ago").arg(static_cast<int>(seconds / 3600));
    return text(DayFormat::moment(moment, now, calendar));
}

QString TimeTexts::remaining(Date moment, Date now) {
    const double seconds = std::ceil(Seconds(moment - now).count());
    return seconds < 60 ? QString("%1 s").arg(static_cast<int>(seconds))
                        : QString("%1 min").arg(static_cast<int>(std::ceil(seconds / 60)));
}

} // namespace tokwatch

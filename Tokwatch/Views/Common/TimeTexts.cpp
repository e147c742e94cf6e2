#include "TimeTexts.h"

#include "DayFormat.h"
#include "Text.h"

namespace tokwatch {

QString TimeTexts::updated(std::optional<Date> moment, Date now, const Calendar& calendar) {
    if (!moment) return {};
    const double seconds = Seconds(now - *moment).count();
    // A clock that was set back makes the moment lie ahead: that is as good as now.
    if (seconds < 60) return "Updated just now";
    if (seconds < 3600) return QString("Updated %1 min ago").arg(static_cast<int>(seconds / 60));
    if (seconds < 86'400) return QString("Updated %1 h ago").arg(static_cast<int>(seconds / 3600));
    return "Updated " + TimeTexts::moment(*moment, now, calendar);
}

QString TimeTexts::moment(Date moment, Date now, const Calendar& calendar) {
    const Calendar::Fields fields = calendar.fields(moment);
    QString time = QString("%1:%2").arg(fields.hour).arg(fields.minute, 2, 10, QChar('0'));
    if (calendar.dayKey(moment) == calendar.dayKey(now)) return time;
    return text(DayFormat::day(moment, calendar)) + ", " + time;
}

} // namespace tokwatch

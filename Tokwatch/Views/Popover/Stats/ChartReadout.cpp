#include "Tokwatch/Views/Popover/Stats/ChartReadout.h"

#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/SummaryTexts.h"
#include "Tokwatch/Views/Common/Text.h"

namespace tokwatch {

void nameDay(ChartReadout& readout, Date day, bool isToday, const Calendar& calendar) {
    readout.title = isToday ? "Today, " + text(DayFormat::day(day, calendar))
                            : text(DayFormat::weekdayAndDay(day, calendar));
    readout.spoken = text(DayFormat::spoken(day, calendar)) + ": " + readout.spoken;
}

void nameWhole(ChartReadout& readout, std::int64_t days) {
    readout.title = text(SummaryTexts::period(days));
    readout.spoken = readout.title + ": " + readout.spoken;
}

} // namespace tokwatch

#include "moc_ChartReadout.cpp"

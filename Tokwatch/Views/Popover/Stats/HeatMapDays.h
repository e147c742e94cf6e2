#pragma once

#include "Tokwatch/Preferences/PreferenceTypes.h"
#include "Tokwatch/Views/Popover/Stats/ChartReadout.h"
#include "TokwatchCore/Store/UsageSummary.h"
#include "TokwatchCore/Support/Calendar.h"

#include <QObject>
#include <QString>

#include <vector>

namespace tokwatch {

struct HeatMapCell {
    int week = 0;    ///< column
    int weekday = 0; ///< row, 0 is Monday
    int step = 0;    ///< of the theme's intensities, 0 is no usage
    ChartReadout readout;
    friend bool operator==(const HeatMapCell&, const HeatMapCell&) = default;
};

struct HeatMapMonth {
    int week = 0; ///< that holds the month's first day; the first week shown for its own month
    QString text;
    friend bool operator==(const HeatMapMonth&, const HeatMapMonth&) = default;
};

/// The days of a summary as a calendar: a column for each week, a row for each weekday. The last
/// cell is today.
///
/// A day's step tells its place among the days with usage, a quarter of them for each step: one
/// day of a hundredfold usage then does not make all the others look alike, as it would where steps
/// followed the amounts.
struct HeatMapDays {
    Q_GADGET
  public:
    int weeks = 0;
    std::vector<HeatMapCell> cells; ///< by day, oldest first
    std::vector<HeatMapMonth> months;
    ChartReadout whole;
    friend bool operator==(const HeatMapDays&, const HeatMapDays&) = default;

    static HeatMapDays of(const UsageSummary& summary, SummaryUnit unit, const Calendar& calendar);
};

/// The step, 1 to 4, of each amount above zero among the amounts above zero; 0 for the others.
/// Equal amounts have equal steps, and where all are equal they stand in the middle.
std::vector<int> heatMapSteps(const std::vector<double>& amounts);

} // namespace tokwatch

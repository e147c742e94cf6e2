#include "Tokwatch/Views/Popover/Stats/HeatMapDays.h"

#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/UsageAmount.h"
#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Support/Amounts.h"

#include <algorithm>
#include <map>
#include <string>

namespace tokwatch {
namespace {

/// A label needs this many columns to itself.
constexpr int weeksOfALabel = 2;

struct Day {
    UsageAmount amount;
    std::int64_t sessions = 0;
};

ChartReadout readoutOf(const Day& day, SummaryUnit unit) {
    const std::string sessions = counted(day.sessions, "session");
    const std::string note = day.amount.note(unit);
    ChartReadout readout;
    readout.value = text(day.amount.text(unit));
    readout.note = text(note + " · " + sessions);
    readout.spoken = text(day.amount.spoken(unit) + ". " + note + ", " + sessions);
    return readout;
}

std::vector<HeatMapMonth> monthsOf(const std::vector<HeatMapCell>& cells,
                                   const std::vector<Date>& dates, const Calendar& calendar) {
    std::vector<HeatMapMonth> months;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (i > 0 && calendar.fields(dates[i]).day != 1) continue;
        const QString name = text(DayFormat::day(dates[i], calendar)).section(' ', 0, 0);
        // The rest of a month that leaves its name no room goes without.
        if (!months.empty() && cells[i].week - months.back().week < weeksOfALabel)
            months.pop_back();
        months.push_back({cells[i].week, name});
    }
    return months;
}

} // namespace

std::vector<int> heatMapSteps(const std::vector<double>& amounts) {
    constexpr double quarters = 4;
    std::vector<double> used;
    std::ranges::copy_if(amounts, std::back_inserter(used), [](double x) { return x > 0; });
    std::ranges::sort(used);
    std::vector<int> steps;
    for (const double amount : amounts) {
        if (!(amount > 0)) {
            steps.push_back(0);
            continue;
        }
        const auto equal = std::ranges::equal_range(used, amount);
        const auto below = static_cast<double>(equal.begin() - used.begin());
        // The middle of the places that the equal ones share, as a fraction.
        const double place =
            (below + static_cast<double>(equal.size()) / 2) / static_cast<double>(used.size());
        steps.push_back(1 + std::min(static_cast<int>(place * quarters), 3));
    }
    return steps;
}

HeatMapDays HeatMapDays::of(const UsageSummary& summary, SummaryUnit unit,
                            const Calendar& calendar) {
    std::map<std::string, Day> used;
    for (const UsageSummary::DayRow& row : summary.perDay)
        used[calendar.dayKey(row.day)] = {{row.costUSD, row.tokens}, row.sessions};
    const std::vector<Date> dates =
        calendar.daysEnding(summary.windowEnd, static_cast<int>(summary.days));

    HeatMapDays map;
    Day whole;
    std::vector<Day> days;
    std::vector<double> amounts;
    for (const Date& date : dates) {
        days.push_back(used[calendar.dayKey(date)]);
        amounts.push_back(days.back().amount.in(unit));
        whole.amount += days.back().amount;
        whole.sessions += days.back().sessions;
    }
    const std::vector<int> steps = heatMapSteps(amounts);
    int week = 0;
    for (std::size_t i = 0; i < dates.size(); ++i) {
        const int weekday = calendar.fields(dates[i]).weekday;
        if (i > 0 && weekday <= map.cells.back().weekday) ++week;
        HeatMapCell cell{week, weekday, steps[i], readoutOf(days[i], unit)};
        // Usage without a price is some usage.
        if (days[i].amount.tokens > 0) cell.step = std::max(cell.step, 1);
        nameDay(cell.readout, dates[i], i + 1 == dates.size(), calendar);
        map.cells.push_back(std::move(cell));
    }
    map.weeks = map.cells.empty() ? 0 : week + 1;
    map.months = monthsOf(map.cells, dates, calendar);
    map.whole = readoutOf(whole, unit);
    nameWhole(map.whole, summary.days);
    return map;
}

} // namespace tokwatch

#include "moc_HeatMapDays.cpp"

#include "Tokwatch/Views/Popover/ChartDays.h"

#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/SummaryDisplay.h"
#include "Tokwatch/Views/Common/Text.h"
#include "Tokwatch/Views/Popover/ChartScale.h"
#include "Tokwatch/Views/Popover/LimitRows.h"
#include "TokwatchCore/Presentation/MeterFormat.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace tokwatch {
namespace {

using Points = std::vector<UsageSummary::DayPoint>;

/// The days of each provider that was used at all, in declaration order.
std::map<ProviderID, Points> usedProviders(const UsageSummary& summary) {
    std::map<ProviderID, Points> points;
    for (const UsageSummary::DayPoint& point : summary.daily)
        points[point.provider].push_back(point);
    std::erase_if(points, [](const auto& entry) {
        return std::ranges::all_of(entry.second, [](const UsageSummary::DayPoint& point) {
            return point.tokens == 0 && point.costUSD == 0;
        });
    });
    return points;
}

QString tickText(double amount, double step, SummaryUnit unit) {
    if (unit == SummaryUnit::tokens)
        return text(SummaryDisplay::compactTokens(std::llround(amount)));
    return text(std::trunc(step) == step ? MeterFormat::wholeMoney(amount)
                                         : MeterFormat::money(amount));
}

/// Weeks are told apart by their Mondays.
QString columnLabel(Date day, bool isToday, const Calendar& calendar) {
    if (isToday) return "Today";
    return calendar.fields(day).weekday == 0 ? text(DayFormat::day(day, calendar)) : QString();
}

ChartReadout readoutOf(const std::vector<ChartSeries>& series,
                       const std::vector<ChartAmount>& amounts, SummaryUnit unit) {
    ChartReadout readout;
    ChartAmount sum;
    QStringList spokenParts;
    for (std::size_t i = 0; i < amounts.size(); ++i) {
        sum += amounts[i];
        readout.figures.append(amounts[i].text(unit));
        if (amounts[i].in(unit) > 0)
            spokenParts.append(series[i].name + " " + amounts[i].text(unit));
    }
    readout.value = sum.text(unit);
    readout.note = sum.note(unit);
    readout.spoken = sum.spoken(unit);
    // One part is the whole.
    if (spokenParts.size() > 1) readout.spoken += ": " + spokenParts.join(", ");
    readout.spoken += ". " + readout.note;
    return readout;
}

std::vector<ChartAmount> amountsOf(const std::map<ProviderID, Points>& points, std::size_t day) {
    std::vector<ChartAmount> amounts;
    for (const auto& [provider, days] : points)
        amounts.push_back({days[day].costUSD, days[day].tokens});
    return amounts;
}

/// The window's amounts: the very numbers that other tabs show.
std::vector<ChartAmount> wholeOf(const UsageSummary& summary,
                                 const std::map<ProviderID, Points>& points) {
    std::vector<ChartAmount> amounts;
    for (const auto& entry : points) {
        const auto tool =
            std::ranges::find(summary.tools, entry.first, &UsageSummary::Tool::provider);
        amounts.push_back(tool == summary.tools.end() ? ChartAmount{}
                                                      : ChartAmount{tool->costUSD, tool->tokens});
    }
    return amounts;
}

} // namespace

QVariantList ChartDays::seriesList() const {
    QVariantList list;
    for (const ChartSeries& entry : series)
        list.append(QVariant::fromValue(entry));
    return list;
}

ChartDays ChartDays::of(const UsageSummary& summary, SummaryUnit unit, const Calendar& calendar) {
    ChartDays chart;
    const std::map<ProviderID, Points> points = usedProviders(summary);
    for (const auto& entry : points)
        chart.series.push_back(
            {text(rawValue(entry.first)), text(displayName(entry.first)), seriesOf(entry.first)});
    chart.whole = readoutOf(chart.series, wholeOf(summary, points), unit);
    chart.whole.title = QString("Last %1 days").arg(summary.days);
    chart.whole.spoken = chart.whole.title + ": " + chart.whole.spoken;
    if (points.empty()) return chart;

    double most = 0;
    const Points& anyPoints = points.begin()->second;
    for (std::size_t day = 0; day < anyPoints.size(); ++day) {
        const Date date = anyPoints[day].day;
        const bool isToday = day + 1 == anyPoints.size();
        const std::vector<ChartAmount> amounts = amountsOf(points, day);
        ChartColumn column;
        double height = 0;
        for (const ChartAmount& amount : amounts) {
            column.parts.push_back(amount.in(unit));
            height += amount.in(unit);
        }
        most = std::max(most, height);
        column.label = columnLabel(date, isToday, calendar);
        column.readout = readoutOf(chart.series, amounts, unit);
        column.readout.title = isToday ? "Today, " + text(DayFormat::day(date, calendar))
                                       : text(DayFormat::weekdayAndDay(date, calendar));
        column.readout.spoken =
            text(DayFormat::spoken(date, calendar)) + ": " + column.readout.spoken;
        chart.columns.push_back(std::move(column));
    }

    constexpr double oneCent = 0.01;
    const ChartScale scale = ChartScale::reaching(most, unit == SummaryUnit::cost ? oneCent : 1);
    for (const double tick : scale.ticks)
        chart.ticks.push_back({tick / scale.top(), tickText(tick, scale.step, unit)});
    for (ChartColumn& column : chart.columns)
        for (double& part : column.parts)
            part = scale.top() > 0 ? part / scale.top() : 0;
    return chart;
}

} // namespace tokwatch

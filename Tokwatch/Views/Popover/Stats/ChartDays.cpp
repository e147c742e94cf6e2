#include "Tokwatch/Views/Popover/Stats/ChartDays.h"

#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/SummaryDisplay.h"
#include "Tokwatch/Display/UsageAmount.h"
#include "Tokwatch/Pictures/Marks.h"
#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Presentation/MeterFormat.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

namespace tokwatch {
namespace {

constexpr double mostTicks = 3;
/// What division leaves of a whole number.
constexpr double tolerance = 1e-9;

double ticksFor(double most, double step) {
    return std::ceil(most / step - tolerance);
}

bool isMultiple(double step, double smallest) {
    const double quotient = step / smallest;
    return std::abs(quotient - std::round(quotient)) < tolerance * quotient;
}

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

/// What one provider used.
struct Use {
    ProviderID provider;
    UsageAmount amount;
};

ChartReadout readoutOf(const std::vector<Use>& uses, SummaryUnit unit) {
    ChartReadout readout;
    UsageAmount sum;
    QStringList spokenParts;
    for (const auto& [provider, amount] : uses) {
        sum += amount;
        readout.figures[text(rawValue(provider))] = text(amount.text(unit));
        if (amount.in(unit) > 0)
            spokenParts.append(text(displayName(provider)) + " " + text(amount.text(unit)));
    }
    readout.value = text(sum.text(unit));
    readout.note = text(sum.note(unit));
    readout.spoken = text(sum.spoken(unit));
    // One part is the whole.
    if (spokenParts.size() > 1) readout.spoken += ": " + spokenParts.join(", ");
    readout.spoken += ". " + readout.note;
    return readout;
}

std::vector<Use> usesOf(const std::map<ProviderID, Points>& points, std::size_t day) {
    std::vector<Use> uses;
    for (const auto& [provider, days] : points)
        uses.push_back({provider, {days[day].costUSD, days[day].tokens}});
    return uses;
}

/// The window's amounts: the very numbers that other tabs show.
std::vector<Use> wholeOf(const UsageSummary& summary, const std::map<ProviderID, Points>& points) {
    std::vector<Use> uses;
    for (const auto& [provider, days] : points) {
        const auto tool = std::ranges::find(summary.tools, provider, &UsageSummary::Tool::provider);
        uses.push_back({provider, tool == summary.tools.end()
                                      ? UsageAmount{}
                                      : UsageAmount{tool->costUSD, tool->tokens}});
    }
    return uses;
}

} // namespace

ChartScale ChartScale::reaching(double most, double smallest) {
    if (!(most > 0) || !std::isfinite(most)) return {};
    double magnitude = smallest;
    while (ticksFor(most, magnitude * 10) > mostTicks)
        magnitude *= 10;
    ChartScale scale;
    for (const double round : std::array{1.0, 2.0, 2.5, 5.0, 10.0}) {
        scale.step = round * magnitude;
        if (isMultiple(scale.step, smallest) && ticksFor(most, scale.step) <= mostTicks) break;
    }
    for (int tick = 1; tick <= ticksFor(most, scale.step); ++tick)
        scale.ticks.push_back(tick * scale.step);
    return scale;
}

QVariantList ChartDays::seriesList() const {
    QVariantList list;
    for (const ChartSeries& entry : series)
        list.append(QVariant::fromValue(entry));
    return list;
}

ChartDays ChartDays::of(const UsageSummary& summary, SummaryUnit unit, const Calendar& calendar) {
    ChartDays chart;
    const std::map<ProviderID, Points> points = usedProviders(summary);
    for (const auto& [provider, days] : points)
        chart.series.push_back({text(rawValue(provider)), text(displayName(provider))});
    chart.whole = readoutOf(wholeOf(summary, points), unit);
    nameWhole(chart.whole, summary.days);
    if (points.empty()) return chart;

    double most = 0;
    const Points& anyPoints = points.begin()->second;
    for (std::size_t day = 0; day < anyPoints.size(); ++day) {
        const Date date = anyPoints[day].day;
        const bool isToday = day + 1 == anyPoints.size();
        const std::vector<Use> uses = usesOf(points, day);
        ChartColumn column;
        double height = 0;
        for (const auto& [provider, amount] : uses) {
            column.parts.push_back({seriesOf(provider), amount.in(unit)});
            height += amount.in(unit);
        }
        most = std::max(most, height);
        column.label = columnLabel(date, isToday, calendar);
        column.readout = readoutOf(uses, unit);
        nameDay(column.readout, date, isToday, calendar);
        chart.columns.push_back(std::move(column));
    }

    constexpr double oneCent = 0.01;
    const ChartScale scale = ChartScale::reaching(most, unit == SummaryUnit::cost ? oneCent : 1);
    for (const double tick : scale.ticks)
        chart.ticks.push_back({tick / scale.top(), tickText(tick, scale.step, unit)});
    for (ChartColumn& column : chart.columns)
        for (ChartPart& part : column.parts)
            part.fraction = scale.top() > 0 ? part.fraction / scale.top() : 0;
    return chart;
}

} // namespace tokwatch

#include "moc_ChartDays.cpp"

#include "Tokwatch/Views/Common/Text.h"
#include "Tokwatch/Views/Popover/Models/Breakdown.h"

#include <algorithm>
#include <utility>

namespace tokwatch {
namespace {

/// What the longest of the bars stands for.
double largestShare(const UsageSummary& summary, SummaryUnit unit) {
    double largest = 0;
    for (const UsageSummary::DayRow& day : summary.perDay)
        largest = std::max(largest, unit == SummaryUnit::cost ? day.costUSD
                                                              : static_cast<double>(day.tokens));
    const double whole = unit == SummaryUnit::cost ? summary.totalCostUSD
                                                   : static_cast<double>(summary.tokens.total());
    return whole > 0 ? largest / whole : 0;
}

class DayBreakdown final : public Breakdown {
  public:
    DayBreakdown(UsageSummary whole, SummaryUnit shownUnit, Calendar days)
        : summary(std::move(whole)), unit(shownUnit), calendar(std::move(days)),
          largest(largestShare(summary, unit)) {}

    Segment::Breakdown mode() const override { return Segment::ByDay; }
    std::size_t count() const override { return summary.perDay.size(); }
    BreakdownRow row(std::size_t at) const override {
        BreakdownRow row = rowOf(shown(at), unit);
        row.fraction = largest > 0 ? std::min(1.0, row.fraction / largest) : 0;
        return row;
    }
    TableText data() const override {
        TableText table{{{"Day"}, {"Sessions"}, {"Tokens"}, {"Cost (USD)"}}, {}};
        for (const UsageSummary::DayRow& day : summary.perDay)
            table.rows.push_back({text(calendar.dayKey(day.day)), QString::number(day.sessions),
                                  QString::number(day.tokens), plainNumber(day.costUSD)});
        return table;
    }

  private:
    std::vector<TableText::Column> labels() const override { return {{"Day"}}; }
    QStringList label(const SummaryDisplay::Row& row) const override { return {text(row.title)}; }
    SummaryDisplay::Row shown(std::size_t at) const override {
        return SummaryDisplay::row(summary.perDay[at], static_cast<int>(at) + 1, summary, unit,
                                   calendar);
    }

    UsageSummary summary;
    SummaryUnit unit;
    Calendar calendar;
    double largest;
};

} // namespace

BreakdownPointer breakdownByDay(UsageSummary summary, SummaryUnit unit, Calendar calendar) {
    return std::make_shared<DayBreakdown>(std::move(summary), unit, std::move(calendar));
}

} // namespace tokwatch

#include "Tokwatch/Display/PlainSummary.h"

#include "Tokwatch/Display/SummaryTexts.h"
#include "Tokwatch/Display/UsageAmount.h"

namespace tokwatch {
namespace {

std::string usageLine(std::int64_t days, const UsageAmount& used, SummaryUnit unit) {
    if (used.tokens == 0) return SummaryTexts::noUsage(days);
    return SummaryTexts::period(days) + ": " + used.text(unit) + " · " + used.note(unit) +
           std::string(SummaryTexts::estimateSuffix);
}

} // namespace

std::string plainSummary(const UsageSummary& summary, const std::vector<LimitStep>& limits,
                         SummaryUnit unit) {
    UsageAmount today;
    for (const UsageSummary::DayRow& day : summary.perDay)
        if (day.day == summary.windowEnd) today = {day.costUSD, day.tokens};
    std::string lines = usageLine(1, today, unit);
    if (summary.days > 1)
        lines +=
            '\n' + usageLine(summary.days, {summary.totalCostUSD, summary.tokens.total()}, unit);
    for (const LimitStep& limit : limits)
        lines += '\n' + limit.title.tooltip;
    return lines;
}

} // namespace tokwatch

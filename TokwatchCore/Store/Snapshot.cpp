#include "TokwatchCore/Store/Snapshot.h"

#include "TokwatchCore/Records/RecordFields.h"
#include "TokwatchCore/Support/CheckedArithmetic.h"

#include <algorithm>

namespace tokwatch {
namespace {

constexpr int seriesDays = 30;

struct ProviderTotals {
    std::int64_t tokens = 0;
    double costUSD = 0;
};

std::map<Date, double> costByDay(const UsageSummary& summary, const Calendar& calendar) {
    std::map<Date, double> costs;
    for (const UsageSummary::DayPoint& point : summary.daily)
        costs[calendar.startOfDay(point.day)] += point.costUSD;
    return costs;
}

std::map<ProviderID, ProviderTotals> totalsByProvider(const UsageSummary& summary) {
    std::map<ProviderID, ProviderTotals> totals;
    for (const UsageSummary::DayPoint& point : summary.daily) {
        totals[point.provider].tokens = checkedAdd(totals[point.provider].tokens, point.tokens);
        totals[point.provider].costUSD += point.costUSD;
    }
    return totals;
}

} // namespace

Snapshot Snapshot::make(const UsageSummary& summary,
                        const std::map<ProviderID, ProviderLimits>& limits,
                        const std::vector<ProviderID>& order, Date now, const Calendar& calendar) {
    const std::map<Date, double> costs = costByDay(summary, calendar);
    const auto costOf = [&costs](Date day) {
        const auto found = costs.find(day);
        return found == costs.end() ? 0 : found->second;
    };

    Snapshot snapshot;
    snapshot.generatedAt = now;
    const std::map<ProviderID, ProviderTotals> totals = totalsByProvider(summary);
    for (const ProviderID id : order) {
        const ProviderLimits* known = limitsOf(limits, id);
        const auto tool = std::ranges::find(summary.tools, id, &UsageSummary::Tool::provider);
        const auto total = totals.find(id);
        const bool hasTotals =
            total != totals.end() && (total->second.tokens >= 1 || total->second.costUSD > 0);
        if (known == nullptr && tool == summary.tools.end() && !hasTotals) continue;

        Provider& provider = snapshot.providers.emplace_back();
        provider.id = id;
        if (known != nullptr) {
            provider.plan = known->plan;
            provider.windows = known->windows;
            provider.credits = known->credits;
            provider.status = known->status;
        }
        if (tool != summary.tools.end()) {
            provider.tokens30d = tool->tokens;
            provider.cost30dUSD = tool->costUSD;
            provider.approximate = tool->approximate;
        } else if (total != totals.end()) {
            provider.tokens30d = total->second.tokens;
            provider.cost30dUSD = total->second.costUSD;
        }
    }
    const Date today = calendar.startOfDay(now);
    std::optional<Date> last;
    for (int offset = 1 - seriesDays; offset <= 0; ++offset) {
        const Date day = calendar.startOfDay(calendar.addingDays(today, offset));
        // A day that a zone left out when it crossed the date line is asked for as the one after.
        if (day == last) snapshot.dailyCost30.back() = 0;
        snapshot.dailyCost30.push_back(costOf(day));
        last = day;
    }
    snapshot.costTodayUSD = costOf(today);
    snapshot.cost30dUSD = summary.totalCostUSD;
    return snapshot;
}

constexpr auto fieldsOf(const Snapshot::Provider*) {
    using R = Snapshot::Provider;
    return std::tuple{Field{"id", &R::id},
                      Field{"plan", &R::plan},
                      Field{"windows", &R::windows},
                      Field{"credits", &R::credits},
                      Field{"status", &R::status},
                      Field{"tokens30d", &R::tokens30d},
                      Field{"cost30dUSD", &R::cost30dUSD},
                      Field{"approximate", &R::approximate}};
}

constexpr auto fieldsOf(const Snapshot*) {
    using R = Snapshot;
    return std::tuple{Field{"generatedAt", &R::generatedAt}, Field{"providers", &R::providers},
                      Field{"costTodayUSD", &R::costTodayUSD}, Field{"cost30dUSD", &R::cost30dUSD},
                      Field{"dailyCost30", &R::dailyCost30}};
}

template Json encode(const Snapshot&, DateCoding);
template Snapshot decode(const Json&, DateCoding);

} // namespace tokwatch

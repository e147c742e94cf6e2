#include "TokwatchCore/Store/Snapshot.h"

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

Json encode(const Snapshot::Provider& provider, DateCoding dates) {
    Json json = Json::object();
    json["id"] = encode(provider.id);
    if (provider.plan) json["plan"] = *provider.plan;
    json["windows"] = Json::array();
    for (const LimitWindow& window : provider.windows)
        json["windows"].push_back(encode(window, dates));
    if (provider.credits) json["credits"] = encode(*provider.credits);
    json["status"] = encode(provider.status);
    json["tokens30d"] = provider.tokens30d;
    json["cost30dUSD"] = provider.cost30dUSD;
    json["approximate"] = provider.approximate;
    return json;
}

Snapshot::Provider decodeProvider(const Json& json, DateCoding dates) {
    Snapshot::Provider provider;
    provider.id = decodeProviderID(coding::required(json, "id"));
    if (const Json* plan = coding::optional(json, "plan")) provider.plan = coding::string(*plan);
    for (const Json& window : coding::array(coding::required(json, "windows")))
        provider.windows.push_back(decodeLimitWindow(window, dates));
    if (const Json* credits = coding::optional(json, "credits"))
        provider.credits = decodeCredits(*credits);
    provider.status = decodeProviderStatus(coding::required(json, "status"));
    provider.tokens30d = coding::integer(coding::required(json, "tokens30d"));
    provider.cost30dUSD = coding::number(coding::required(json, "cost30dUSD"));
    provider.approximate = coding::boolean(coding::required(json, "approximate"));
    return provider;
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
        const auto limit = limits.find(id);
        const auto tool = std::ranges::find(summary.tools, id, &UsageSummary::Tool::provider);
        const auto total = totals.find(id);
        const bool hasTotals =
            total != totals.end() && (total->second.tokens >= 1 || total->second.costUSD > 0);
        if (limit == limits.end() && tool == summary.tools.end() && !hasTotals) continue;

        Provider& provider = snapshot.providers.emplace_back();
        provider.id = id;
        if (limit != limits.end()) {
            provider.plan = limit->second.plan;
            provider.windows = limit->second.windows;
            provider.credits = limit->second.credits;
            provider.status = limit->second.status;
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

Json encode(const Snapshot& snapshot, DateCoding dates) {
    Json json = Json::object();
    json["generatedAt"] = encode(snapshot.generatedAt, dates);
    json["providers"] = Json::array();
    for (const Snapshot::Provider& provider : snapshot.providers)
        json["providers"].push_back(encode(provider, dates));
    json["costTodayUSD"] = snapshot.costTodayUSD;
    json["cost30dUSD"] = snapshot.cost30dUSD;
    json["dailyCost30"] = snapshot.dailyCost30;
    return json;
}

Snapshot decodeSnapshot(const Json& json, DateCoding dates) {
    Snapshot snapshot;
    snapshot.generatedAt = decodeDate(coding::required(json, "generatedAt"), dates);
    for (const Json& provider : coding::array(coding::required(json, "providers")))
        snapshot.providers.push_back(decodeProvider(provider, dates));
    snapshot.costTodayUSD = coding::number(coding::required(json, "costTodayUSD"));
    snapshot.cost30dUSD = coding::number(coding::required(json, "cost30dUSD"));
    for (const Json& cost : coding::array(coding::required(json, "dailyCost30")))
        snapshot.dailyCost30.push_back(coding::number(cost));
    return snapshot;
}

} // namespace tokwatch

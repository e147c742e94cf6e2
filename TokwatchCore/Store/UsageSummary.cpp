#include "TokwatchCore/Store/UsageSummary.h"

#include "TokwatchCore/Records/UsageEvent.h"
#include "TokwatchCore/Support/CheckedArithmetic.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

namespace tokwatch {
namespace {

using ModelKey = std::pair<ProviderID, std::string>;

struct Sums {
    std::int64_t tokens = 0;
    double costUSD = 0;
};

struct ProviderSums {
    Sums all;
    std::map<std::string, Sums> byDay;
    std::int64_t sessions = 0;
    bool approximate = false;
};

struct ModelSums {
    TokenCounts tokens;
    std::optional<double> costUSD;
    bool approximate = false;
};

struct DaySums {
    Sums all;
    std::int64_t sessions = 0;
};

double share(double part, double whole) {
    return whole > 0 ? part / whole : 0;
}

/// Adds the stored rows up, and then lays the sums out as the summary's lists.
class Summarizer {
  public:
    Summarizer(const SummaryWindow& w, const PriceTable& p) : window(w), prices(p) {}

    void add(const DailyRow& row) {
        const auto describe = [&row] { return usageOrigin(row.provider, row.model, row.day); };
        const SumOrigin sumOrigin(describe);
        const PricedCost cost = prices.cost(row.model, row.tokens, row.reportedUSD);
        const std::int64_t tokens = row.tokens.total();
        ProviderSums& provider = providers[row.provider];
        ModelSums& model = models[{row.provider, row.model}];
        Sums& providerDay = provider.byDay[row.day];
        Sums& day = days[row.day].all;
        summary.tokens += row.tokens;
        totalTokens = summary.tokens.total();
        model.tokens += row.tokens;
        for (Sums* sums : {&provider.all, &providerDay, &day})
            sums->tokens = checkedAdd(sums->tokens, tokens);
        provider.approximate = provider.approximate || cost.approximate;
        model.approximate = model.approximate || cost.approximate;
        if (!cost.usd) {
            summary.hasUnknownPrices = true;
            return;
        }
        summary.totalCostUSD += *cost.usd;
        for (Sums* sums : {&provider.all, &providerDay, &day})
            sums->costUSD += *cost.usd;
        model.costUSD = model.costUSD.value_or(0) + *cost.usd;
        summary.costByType += *cost.breakdown;
        summary.cacheSavingsUSD += cost.cacheSavingsUSD;
    }

    void add(const SessionCount& count) {
        for (std::int64_t* sum :
             {&providers[count.provider].sessions, &days[count.day].sessions, &summary.sessions})
            *sum = checkedAdd(*sum, count.sessions);
    }

    UsageSummary finish(std::int64_t dayCount) {
        summary.days = std::max<std::int64_t>(dayCount, 1);
        summary.windowEnd = window.today;
        // The map's order is the providers' declaration order.
        for (const auto& [provider, sums] : providers) {
            addTool(provider, sums);
            addDaily(provider, sums);
        }
        std::stable_sort(summary.tools.begin(), summary.tools.end(),
                         [](const auto& a, const auto& b) { return a.costUSD > b.costUSD; });
        addModels();
        addPerDay();
        return std::move(summary);
    }

  private:
    double tokenShare(std::int64_t tokens) const {
        return totalTokens >= 1 ? static_cast<double>(tokens) / static_cast<double>(totalTokens)
                                : 0;
    }

    void addTool(ProviderID provider, const ProviderSums& sums) {
        summary.tools.push_back({provider, sums.sessions, sums.all.tokens, sums.all.costUSD,
                                 share(sums.all.costUSD, summary.totalCostUSD),
                                 tokenShare(sums.all.tokens), sums.approximate});
    }

    void addDaily(ProviderID provider, const ProviderSums& sums) {
        for (std::size_t i = 0; i < window.days.size(); ++i) {
            const auto found = sums.byDay.find(window.keys[i]);
            const Sums day = found == sums.byDay.end() ? Sums{} : found->second;
            summary.daily.push_back({window.days[i], provider, day.tokens, day.costUSD});
        }
    }

    void addModels() {
        for (const auto& [key, sums] : models) {
            const auto& [provider, model] = key;
            summary.models.push_back({provider, model, sums.costUSD,
                                      share(sums.costUSD.value_or(0), summary.totalCostUSD),
                                      tokenShare(sums.tokens.total()), sums.tokens,
                                      sums.approximate});
        }
        const auto rank = [](const UsageSummary::ModelRow& row) {
            return std::tuple(!row.costUSD.has_value(), -row.costUSD.value_or(0),
                              -row.tokens.total(), rawValue(row.provider),
                              std::string_view(row.model));
        };
        std::sort(summary.models.begin(), summary.models.end(),
                  [rank](const auto& a, const auto& b) { return rank(a) < rank(b); });
    }

    void addPerDay() {
        for (std::size_t i = window.days.size(); i-- > 0;) {
            const auto found = days.find(window.keys[i]);
            if (found == days.end()) continue;
            const DaySums& day = found->second;
            summary.perDay.push_back(
                {window.days[i], day.all.costUSD, day.all.tokens, day.sessions});
        }
    }

    const SummaryWindow& window;
    const PriceTable& prices;
    UsageSummary summary;
    std::map<ProviderID, ProviderSums> providers;
    std::map<ModelKey, ModelSums> models;
    std::map<std::string, DaySums> days;
    std::int64_t totalTokens = 0;
};

} // namespace

SummaryWindow::SummaryWindow(std::int64_t count, Date now, const Calendar& calendar)
    : days(calendar.daysEnding(now, static_cast<int>(std::max<std::int64_t>(count, 1)))),
      today(calendar.startOfDay(now)), todayKey(calendar.dayKey(now)) {
    keys.reserve(days.size());
    for (const Date day : days)
        keys.push_back(calendar.dayKey(day));
}

UsageSummary summarize(std::int64_t days, const SummaryWindow& window,
                       const std::vector<DailyRow>& rows, const std::vector<SessionCount>& sessions,
                       const PriceTable& prices) {
    Summarizer summarizer(window, prices);
    for (const DailyRow& row : rows)
        summarizer.add(row);
    for (const SessionCount& count : sessions)
        summarizer.add(count);
    return summarizer.finish(days);
}

} // namespace tokwatch

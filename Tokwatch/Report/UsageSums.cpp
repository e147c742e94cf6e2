#include "Tokwatch/Report/UsageSums.h"

#include "TokwatchCore/Records/UsageEvent.h"
#include "TokwatchCore/Support/CheckedArithmetic.h"

#include <algorithm>
#include <functional>

namespace tokwatch {

void UsageAddition::add(const CountedResponses::Entry& entry) {
    const Response& response = *entry.response;
    if (responses++ == 0) first = response.timestamp;
    last = response.timestamp;
    sessions.insert(entry.session);
    ModelSums& sums = ofModel(entry.model);
    sums.tokens += response.tokens;
    if (response.reportedUSD)
        sums.reportedUSD = sums.reportedUSD.value_or(0) + *response.reportedUSD;
}

UsageAddition::ModelSums& UsageAddition::ofModel(std::uint32_t model) {
    const auto known = std::ranges::find(byModel, model, &ModelSums::model);
    if (known != byModel.end()) return *known;
    return byModel.emplace_back(ModelSums{model, {}, {}});
}

UsageSums UsageAddition::sums(const std::vector<CountedResponses::Model>& models,
                              const PriceTable& prices) const {
    UsageSums all;
    all.responses = responses;
    all.sessions = static_cast<std::int64_t>(sessions.size());
    all.first = first;
    all.last = last;
    std::vector<ModelSums> ranked = byModel;
    std::ranges::stable_sort(ranked, std::ranges::greater(),
                             [](const ModelSums& sums) { return sums.tokens.total(); });
    for (const ModelSums& sums : ranked) {
        const CountedResponses::Model& model = models[sums.model];
        const auto origin = [&model] { return usageOrigin(model.provider, model.name, "in all"); };
        const SumOrigin sumOrigin(origin);
        all.models.push_back(model.name);
        all.tokens += sums.tokens;
        const PricedCost cost = prices.cost(model.name, sums.tokens, sums.reportedUSD);
        all.approximate = all.approximate || cost.approximate;
        all.hasUnknownPrices = all.hasUnknownPrices || !cost.usd;
        if (cost.usd) all.costUSD = all.costUSD.value_or(0) + *cost.usd;
    }
    return all;
}

} // namespace tokwatch

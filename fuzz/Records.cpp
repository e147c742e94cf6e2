#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Store/PriceTable.h"
#include "TokwatchCore/Store/Snapshot.h"
#include "fuzz/Target.h"

#include <cmath>

namespace tokwatch::fuzzing {
namespace {

/// What another build, another program or a fault of the disk left; none where it is refused.
template<typename Value>
std::optional<Value> decoded(std::string_view text, DateCoding dates) {
    try {
        return decode<Value>(parseJson(text), dates);
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

/// What was read can be written and read again, and is the same then.
template<typename Value>
std::optional<Value> checkedRecord(std::string_view text, DateCoding dates) {
    const auto record = decoded<Value>(text, dates);
    if (!record) return std::nullopt;
    const std::string written = jsonText(encode(*record, dates));
    const auto again = decoded<Value>(written, dates);
    require(again.has_value(), "what is written can be read");
    require(jsonText(encode(*again, dates)) == written, "what is read again is the same");
    return again;
}

void runCursor(std::string_view input) {
    const auto record = decoded<FileCursor>(input, DateCoding::secondsSince2001);
    if (!record) return;
    require(decoded<FileCursor>(jsonText(encode(*record)), DateCoding::secondsSince2001) == record,
            "a cursor is read as it was written");
}

void runLimits(std::string_view input) {
    checkedRecord<ProviderLimits>(input, DateCoding::iso8601);
    const auto limits = checkedRecord<ProviderLimits>(input, DateCoding::secondsSince2001);
    if (!limits) return;
    for (const LimitWindow& window : limits->markedStale().windows) {
        const LimitBarModel bar(window, limits->fetchedAt);
        require(!bar.timeLeftFraction || (*bar.timeLeftFraction >= 0 && *bar.timeLeftFraction <= 1),
                "what is left of the time is a fraction");
        require(!bar.percentLeftText.empty(), "a bar says how much is left");
    }
}

void runSnapshot(std::string_view input) {
    checkedRecord<Snapshot>(input, DateCoding::iso8601);
}

void runPrices(std::string_view input) {
    PriceTable prices;
    try {
        prices = PriceTable::decode(input);
    } catch (const DecodingError&) {
        return;
    }
    const TokenCounts tokens{1'000'000, 2'000'000, 3, 4, 5'000'000, 6};
    for (const auto& [model, price] : prices.models()) {
        require(prices.price(model) == &price, "a model is found by its name");
        const PricedCost cost = prices.cost(model, tokens, 1.0);
        require(cost.usd && cost.breakdown, "what has a price has a cost");
        const CostBreakdown& parts = *cost.breakdown;
        require(parts.other == 0, "a list price comes before a reported cost");
        require(cost.usd == parts.output + parts.input + parts.cacheRead + parts.cacheWrite ||
                    !std::isfinite(*cost.usd),
                "a cost is the sum of its parts");
        const bool isDated = prices.models().contains(model + "-20250101");
        require(isDated || prices.price(model + "-20250101") == &price,
                "a release date at the end of the name does not matter");
    }
}

const Targets records{{"cursor", runCursor},
                      {"limits", runLimits},
                      {"prices", runPrices},
                      {"snapshot", runSnapshot}};

} // namespace
} // namespace tokwatch::fuzzing

#include "TokwatchCore/Store/PriceTable.h"

#include "Platform/System/WholeFile.h"
#include "TokwatchCore/Records/RecordFields.h"
#include "TokwatchCore/Store/ResourceBundle.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tokwatch {
namespace {

constexpr double million = 1'000'000;

/// Bytes. The table has some fifty thousand.
constexpr std::size_t largestTable = 4'194'304;

/// "-YYYYMMDD" at the end of a name.
constexpr std::size_t dateSuffixLength = 9;

bool hasDateSuffix(std::string_view model) {
    if (model.size() < dateSuffixLength) return false;
    const std::string_view suffix = model.substr(model.size() - dateSuffixLength);
    return suffix.front() == '-' && std::all_of(suffix.begin() + 1, suffix.end(),
                                                [](char c) { return c >= '0' && c <= '9'; });
}

double costOf(double usdPerMillion, std::int64_t tokens) {
    return usdPerMillion * static_cast<double>(tokens) / million;
}

} // namespace

constexpr auto fieldsOf(const ModelPrice*) {
    using R = ModelPrice;
    return std::tuple{Field{"input", &R::input},
                      Field{"output", &R::output},
                      Field{"cacheRead", &R::cacheRead},
                      Field{"cacheWrite5m", &R::cacheWrite5m},
                      Field{"cacheWrite1h", &R::cacheWrite1h},
                      Field{"proxyFor", &R::proxyFor},
                      Field{"source", &R::source},
                      Field{"asOf", &R::asOf}};
}

CostBreakdown& CostBreakdown::operator+=(const CostBreakdown& added) {
    input += added.input;
    cacheRead += added.cacheRead;
    cacheWrite += added.cacheWrite;
    output += added.output;
    other += added.other;
    return *this;
}

PriceTable::PriceTable(std::map<std::string, ModelPrice, std::less<>> models)
    : table(std::move(models)) {}

PriceTable PriceTable::bundled() {
    // Costs are a convenience: without prices the tools' own reports still count.
    const std::optional<std::string> text =
        readWholeFile(coreResourceBundle() / "prices.json", largestTable);
    if (!text) return {};
    try {
        return decode(*text);
    } catch (const DecodingError&) {
        return {};
    }
}

PriceTable PriceTable::decode(std::string_view text) {
    const Json document = parseJson(text);
    return PriceTable(tokwatch::decode<std::map<std::string, ModelPrice, std::less<>>>(
        coding::required(document, "models")));
}

const ModelPrice* PriceTable::price(std::string_view model) const {
    auto found = table.find(model);
    if (found == table.end() && hasDateSuffix(model))
        found = table.find(model.substr(0, model.size() - dateSuffixLength));
    return found == table.end() ? nullptr : &found->second;
}

PricedCost PriceTable::cost(std::string_view model, const TokenCounts& tokens,
                            std::optional<double> reportedUSD) const {
    const ModelPrice* listed = price(model);
    if (listed == nullptr) {
        if (!reportedUSD) return {};
        CostBreakdown breakdown;
        breakdown.other = *reportedUSD;
        return {*reportedUSD, breakdown, true, 0};
    }
    CostBreakdown breakdown;
    breakdown.input = costOf(listed->input, tokens.uncachedInput);
    breakdown.cacheRead = costOf(listed->cacheRead, tokens.cacheRead);
    breakdown.cacheWrite = (listed->cacheWrite5m * static_cast<double>(tokens.cacheWrite5m) +
                            listed->cacheWrite1h * static_cast<double>(tokens.cacheWrite1h)) /
                           million;
    breakdown.output = costOf(listed->output, tokens.output);
    const double usd =
        breakdown.output + breakdown.input + breakdown.cacheRead + breakdown.cacheWrite;
    return {usd, breakdown, listed->proxyFor.has_value(),
            costOf(listed->input - listed->cacheRead, tokens.cacheRead)};
}

} // namespace tokwatch

#pragma once

#include "TokwatchCore/Records/TokenCounts.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tokwatch {

/// What one model's tokens cost on its provider's pay-as-you-go API: US dollars per million tokens.
struct ModelPrice {
    double input = 0;
    double output = 0;
    double cacheRead = 0;
    double cacheWrite5m = 0;
    double cacheWrite1h = 0;
    std::optional<std::string> proxyFor; ///< set when the prices are borrowed from that other model
    std::string source;                  ///< where the prices were read
    std::string asOf;                    ///< the date they were read on, "2026-10-24"

    friend bool operator==(const ModelPrice&, const ModelPrice&) = default;
};

/// A cost in US dollars by what caused it.
struct CostBreakdown {
    double input = 0;
    double cacheRead = 0;
    double cacheWrite = 0;
    double output = 0;
    double other = 0; ///< known only as a total that the tool reported

    CostBreakdown& operator+=(const CostBreakdown& other);
    friend bool operator==(const CostBreakdown&, const CostBreakdown&) = default;
};

struct PricedCost {
    std::optional<double> usd; ///< absent when there is neither a price nor a reported cost
    std::optional<CostBreakdown> breakdown; ///< absent exactly when `usd` is
    bool approximate = false;               ///< not a list price times a count
    double cacheSavingsUSD = 0; ///< what cache reads saved against the input price; may be negative

    friend bool operator==(const PricedCost&, const PricedCost&) = default;
};

/// Model names to prices. Names match exactly, or after cutting a release date "-YYYYMMDD" off
/// their end.
class PriceTable {
  public:
    PriceTable() = default;
    explicit PriceTable(std::map<std::string, ModelPrice, std::less<>> models);

    /// The table that comes with the program; empty when its resource is missing or does not
    /// decode, so that only costs that the tools report themselves are known.
    static PriceTable bundled();

    /// From the resource's text; DecodingError when it is not of its shape.
    static PriceTable decode(std::string_view json);

    const ModelPrice* price(std::string_view model) const;

    /// The cost of `tokens`. The reported cost counts only where the table has no price.
    PricedCost cost(std::string_view model, const TokenCounts& tokens,
                    std::optional<double> reportedUSD) const;

    const std::map<std::string, ModelPrice, std::less<>>& models() const { return table; }

  private:
    std::map<std::string, ModelPrice, std::less<>> table;
};

} // namespace tokwatch

#pragma once

#include "Tokwatch/Report/CountedResponses.h"
#include "TokwatchCore/Records/TokenCounts.h"
#include "TokwatchCore/Store/PriceTable.h"
#include "TokwatchCore/Support/Date.h"

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace tokwatch {

/// What a row of a report stands for, added up and priced. Money is US dollars.
struct UsageSums {
    std::int64_t responses = 0;
    std::int64_t sessions = 0; ///< with responses among these
    TokenCounts tokens;
    std::optional<double> costUSD; ///< absent when none of its models has a cost
    bool approximate = false;
    bool hasUnknownPrices = false;   ///< some tokens have neither a price nor a reported cost
    Date first;                      ///< response
    Date last;                       ///< response
    std::vector<std::string> models; ///< the one with the most tokens first
};

/// Adds responses up, to be given in the order of time.
class UsageAddition {
  public:
    void add(const CountedResponses::Entry& entry);
    /// A sum of tokens beyond 64 bits stops the program.
    UsageSums sums(const std::vector<CountedResponses::Model>& models,
                   const PriceTable& prices) const;

  private:
    struct ModelSums {
        std::uint32_t model = 0;
        TokenCounts tokens;
        std::optional<double> reportedUSD;
    };
    ModelSums& ofModel(std::uint32_t model);

    std::int64_t responses = 0;
    std::unordered_set<std::uint32_t> sessions;
    std::vector<ModelSums> byModel; ///< in the order of first use
    Date first;
    Date last;
};

} // namespace tokwatch

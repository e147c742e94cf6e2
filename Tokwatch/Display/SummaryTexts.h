#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tokwatch {

/// The sentences that stand beside a summary's numbers.
struct SummaryTexts {
    /// Behind every cost that is an estimate at pay-as-you-go prices.
    static constexpr std::string_view estimateSuffix = " · API estimate";
    static constexpr std::string_view aboutEstimate = "About the API estimate";
    static constexpr std::string_view estimateExplanation =
        "What these tokens would cost on each provider's pay-as-you-go API. Not what your subscription costs.";
    static constexpr std::string_view excludesUnknownPrices =
        "Excludes models without a published price";

    /// "No usage in the last 30 days"
    static std::string noUsage(std::int64_t days);
};

} // namespace tokwatch

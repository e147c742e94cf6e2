#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tokwatch {

/// The sentences that stand beside a summary's numbers.
struct SummaryTexts {
    /// Behind every cost that is an estimate at pay-as-you-go prices.
    static constexpr std::string_view estimateSuffix = " · API estimate";
    static constexpr std::string_view excludesUnknownPrices =
        "Excludes models without a published price";

    /// "Last 30 days", "Today"
    static std::string period(std::int64_t days);
    /// "No usage in the last 30 days", "No usage today"
    static std::string noUsage(std::int64_t days);
};

} // namespace tokwatch

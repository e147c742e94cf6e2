#pragma once

#include "Tests/Support/Testing.h"
#include "TokwatchCore/Store/UsageSummary.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <optional>
#include <string>
#include <vector>

namespace tokwatch::testing {

/// What one provider used on one day.
struct Used {
    ProviderID provider = ProviderID::claude;
    const char* model = "";
    const char* day = "";
    std::int64_t tokens = 0;
    /// As if the tool had reported it; negative for no price at all.
    double costUSD = 0;
};

/// The summary of a window that ends at noon UTC of the day.
inline UsageSummary summaryOf(const std::string& lastDay, std::int64_t days,
                              const std::vector<Used>& uses,
                              const Calendar& calendar = Calendar::utc()) {
    const Date now = parseISO8601(lastDay + "T12:00:00Z").value();
    std::vector<DailyRow> rows;
    std::vector<SessionCount> sessions;
    for (const Used& used : uses) {
        TokenCounts tokens;
        tokens.output = used.tokens;
        rows.push_back({used.provider, used.model, used.day, tokens,
                        used.costUSD < 0 ? std::nullopt : std::optional(used.costUSD)});
        sessions.push_back({used.provider, used.day, 1});
    }
    return summarize(days, SummaryWindow(days, now, calendar), rows, sessions, PriceTable());
}

} // namespace tokwatch::testing

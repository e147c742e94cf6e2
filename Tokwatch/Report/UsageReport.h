#pragma once

#include "Tokwatch/Report/CountedResponses.h"
#include "Tokwatch/Report/Period.h"
#include "Tokwatch/Report/UsageSums.h"
#include "TokwatchCore/Store/PriceTable.h"
#include "TokwatchCore/Support/Calendar.h"
#include "TokwatchCore/Support/NamedCases.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tokwatch {

/// What a report has a row for.
enum class ReportBy { project, session, hour, day, week, month, model, block };

template<>
inline constexpr std::array<std::string_view, 8> caseNames<ReportBy>{
    "project", "session", "hour", "day", "week", "month", "model", "block"};

/// Where the running block goes if it goes on as since its first response, for which ten minutes
/// are counted at least.
struct BlockPace {
    double tokensPerMinute = 0;
    std::optional<double> usdPerMinute; ///< absent where the block's cost is
    double projectedTokens = 0;         ///< at the block's end
    std::optional<double> projectedUSD;
};

struct ReportRow {
    std::optional<ProviderID> provider; ///< of a session or model
    std::string session;                ///< its id; empty where the log names none
    std::string project;                ///< of a project or session; empty where no log states one
    std::string model;
    std::optional<Period> period; ///< of an hour, day, week, month or block
    UsageSums sums;
    std::optional<BlockPace> pace; ///< of the running block
};

/// What was used in a window of time, added up from the logs themselves.
///
/// A project is the directory that a session began to work in, with a repository's worktrees
/// together. A block is five hours long, from the full hour of the first response that no earlier
/// block holds; blocks that reach into the window are shown whole.
struct UsageReport {
    struct Query {
        ReportBy by = ReportBy::project;
        Period window;    ///< whole days
        std::string home; ///< is no repository itself
    };

    Query query;
    UsageSums total;
    /// Projects and models by their cost, the most first, those without a price last; sessions and
    /// times from the newest.
    std::vector<ReportRow> rows;

    /// When the responses were that `make` has to be given.
    static Period reach(const Query& query);

    static UsageReport make(const Query& query, const CountedResponses& responses,
                            const PriceTable& prices, const Calendar& calendar, Date now);
};

} // namespace tokwatch

#pragma once

#include "Tokwatch/Preferences/PreferenceTypes.h"
#include "TokwatchCore/Store/UsageSummary.h"
#include "TokwatchCore/Support/Calendar.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tokwatch {

/// What tokens were spent on, or their cost.
enum class TokenPart { input, cacheRead, cacheWrite, output, other };
/// "Cache read"
std::string_view labelOf(TokenPart part);

/// A name that a log gives, which may be a megabyte, or blanks, as it may stand on a line.
std::string shownName(std::string_view name);

/// A usage summary as texts and amounts, ready to be laid out. Every surface that shows a summary
/// draws from here.
struct SummaryDisplay {
    /// One part of the stacked bar.
    struct Segment {
        TokenPart part = TokenPart::input;
        double amount = 0;
        std::string text;
        friend bool operator==(const Segment&, const Segment&) = default;
    };
    struct TokenStatistics {
        std::string processed;
        std::string cachedInput;
        std::string uncachedInput;
        std::string output;
        std::string cacheSavings; ///< in money
        friend bool operator==(const TokenStatistics&, const TokenStatistics&) = default;
    };
    struct ToolLine {
        ProviderID provider = ProviderID::claude;
        std::string sessions; ///< "12 sessions"
        std::string value;
        std::string detail; ///< "12.5% of cost"
        friend bool operator==(const ToolLine&, const ToolLine&) = default;
    };
    /// What somebody used, and the part of all that it is.
    struct Use {
        std::optional<double> costUSD;
        bool approximate = false;
        std::int64_t tokens = 0;
        double costShare = 0;  ///< 0…1
        double tokenShare = 0; ///< 0…1
        friend bool operator==(const Use&, const Use&) = default;
    };
    /// A model, a day or a project.
    struct Row {
        std::string id;
        int rank = 0; ///< from 1
        std::optional<ProviderID> provider;
        std::string title;
        std::string cost;  ///< "~" in front of an approximate one, "—" for an unknown one
        std::string share; ///< of the unit; "—" of an unknown cost
        std::string tokens;
        double shareFraction = 0; ///< for the row's bar, 0…1
        friend bool operator==(const Row&, const Row&) = default;
    };
    /// What stands for an amount that nobody knows.
    static constexpr const char* unknown = "—";

    /// The bar's parts above zero, in their fixed order.
    static std::vector<Segment> segments(const UsageSummary& summary, SummaryUnit unit);
    static TokenStatistics tokenStatistics(const UsageSummary& summary);
    static std::vector<ToolLine> toolLines(const UsageSummary& summary, SummaryUnit unit);

    /// The models by what they used of the unit, the most first.
    static std::vector<UsageSummary::ModelRow> ranked(std::vector<UsageSummary::ModelRow> models,
                                                      SummaryUnit unit);
    static Use useOf(const UsageSummary::ModelRow& model);
    /// A row of no provider; the text may come from anywhere.
    static Row row(std::string_view title, const Use& use, int rank, SummaryUnit unit);
    static Row row(const UsageSummary::ModelRow& model, int rank, SummaryUnit unit);
    static Row row(const UsageSummary::DayRow& day, int rank, const UsageSummary& summary,
                   SummaryUnit unit, const Calendar& calendar);
    /// The row in a sentence: "opus, Claude, about $7.50, 1.00K tokens, 75.0% of cost".
    static std::string spoken(const Row& row, SummaryUnit unit);
    /// What the numbers leave out or guess, a line each; none when nothing.
    static std::string notes(const UsageSummary& summary);
    static std::string notes(bool hasUnknownPrices, bool hasApproximateCosts);
    /// The models ranked.
    static std::vector<Row> modelRows(const UsageSummary& summary, SummaryUnit unit);
    /// The days from the newest.
    static std::vector<Row> dayRows(const UsageSummary& summary, SummaryUnit unit,
                                    const Calendar& calendar);

    /// The headline: "$12", "$9.50", "1.5K".
    static std::string compactCost(double usd);
    static std::string compactTokens(std::int64_t tokens);
    static std::string headline(const UsageSummary& summary, SummaryUnit unit);
};

} // namespace tokwatch

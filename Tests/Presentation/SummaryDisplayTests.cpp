#include "Tests/Support/Testing.h"
#include "Tokwatch/Display/SummaryDisplay.h"
#include "TokwatchCore/Support/ISO8601.h"

namespace tokwatch::testing {

using Segment = SummaryDisplay::Segment;
using enum TokenPart;
using Row = SummaryDisplay::Row;

const Calendar berlin = *Calendar::named("Europe/Berlin");

UsageSummary example() {
    UsageSummary summary;
    summary.tokens = {1000, 2000, 300, 200, 500, 400};
    summary.costByType = {1, 2, 3, 4, 0};
    summary.cacheSavingsUSD = 1234.5;
    return summary;
}

TEST(SummaryDisplay, HasASegmentForEachPartThatIsThere) {
    EXPECT_THAT(SummaryDisplay::segments(example(), SummaryUnit::tokens),
                ElementsAre(Segment{input, 1000, "1.00K"}, Segment{cacheRead, 2000, "2.00K"},
                            Segment{cacheWrite, 500, "500"}, Segment{output, 500, "500"}));
    UsageSummary sparse;
    sparse.costByType = {1, 0, 0, 4, 0.001};
    EXPECT_THAT(SummaryDisplay::segments(sparse, SummaryUnit::cost),
                ElementsAre(Segment{input, 1, "$1.00"}, Segment{output, 4, "$4.00"},
                            Segment{other, 0.001, "<$0.01"}));
}

TEST(SummaryDisplay, HasNoShareBeyondTheWholeAndNoneOfNothing) {
    UsageSummary::ModelRow model{ProviderID::grok, "grok-4", 2.5, 1.25, 0.25, {}, true};
    const Row row = SummaryDisplay::row(model, 2, SummaryUnit::cost);
    EXPECT_EQ(row.share, "100.0%");
    EXPECT_EQ(row.shareFraction, 1);
    EXPECT_EQ(row.title, "grok-4");
    model.model = "  ";
    EXPECT_EQ(SummaryDisplay::row(model, 2, SummaryUnit::cost).title, "(no name)");
    const Row day = SummaryDisplay::row({*parseISO8601("2026-03-29T22:00:00Z"), 7.5, 3000, 1}, 1,
                                        UsageSummary(), SummaryUnit::cost, berlin);
    EXPECT_EQ(day.id + " " + day.title + " " + day.share, "day/2026-03-30 Mon, Mar 30 0%");
}

TEST(SummaryDisplay, ShortensHeadlines) {
    const std::vector<std::pair<double, const char*>> costs{
        {0, "$0"},         {0.42, "$0.42"}, {0.004, "$0.00"}, {9.5, "$9.50"},
        {9.999, "$10.00"}, {10, "$10"},     {12.7, "$13"},    {1234.5678, "$1,235"}};
    for (const auto& [usd, text] : costs)
        EXPECT_EQ(SummaryDisplay::compactCost(usd), text);
    const std::vector<std::pair<std::int64_t, const char*>> tokens{
        {0, "0"},        {1500, "1.5K"},       {2'000'000, "2M"},
        {10'000, "10K"}, {1'230'000, "1.23M"}, {1'000'000'000, "1B"}};
    for (const auto& [count, text] : tokens)
        EXPECT_EQ(SummaryDisplay::compactTokens(count), text);
}

} // namespace tokwatch::testing

#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/SummaryDisplay.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;

using Segment = SummaryDisplay::Segment;
using enum TokenPart;
using Row = SummaryDisplay::Row;

const Calendar berlin = *Calendar::named("Europe/Berlin");

UsageSummary example() {
    UsageSummary summary;
    summary.totalCostUSD = 10;
    summary.tokens = {1000, 2000, 300, 200, 500, 400};
    summary.costByType = {1, 2, 3, 4, 0};
    summary.cacheSavingsUSD = 1234.5;
    summary.tools = {{ProviderID::claude, 1, 3000, 7.5, 0.75, 0.6, false},
                     {ProviderID::grok, 0, 1000, 2.5, 0.25, 0.4, true}};
    summary.models = {
        {ProviderID::claude, "opus", 7.5, 0.75, 0.5, {2000, 0, 0, 0, 0, 0}, false},
        {ProviderID::grok, "grok-4", 2.5, 1.25, 0.25, {1000, 0, 0, 0, 0, 0}, true},
        {ProviderID::codex, "new", std::nullopt, 0, 0.25, {999, 0, 0, 0, 0, 0}, false}};
    summary.perDay = {{*parseISO8601("2026-03-29T22:00:00Z"), 7.5, 3000, 1},
                      {*parseISO8601("2026-03-08T23:00:00Z"), 2.5, 1000, 0}};
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

TEST(SummaryDisplay, TellsCachedFromUncachedInput) {
    EXPECT_EQ(SummaryDisplay::tokenStatistics(example()),
              (SummaryDisplay::TokenStatistics{"4.00K", "2.50K", "1.00K", "500", "$1,234.50"}));
}

TEST(SummaryDisplay, RanksModels) {
    EXPECT_THAT(
        SummaryDisplay::breakdown(example(), BreakdownMode::model, SummaryUnit::cost, berlin),
        ElementsAre(
            Row{"claude/opus", 1, ProviderID::claude, "opus", "$7.50", "75.0%", "2.00K", 0.75},
            Row{"grok/grok-4", 2, ProviderID::grok, "grok-4", "~$2.50", "100.0%", "1.00K", 1},
            Row{"codex/new", 3, ProviderID::codex, "new", "—", "—", "999", 0}));
    UsageSummary cheap = example();
    cheap.models[2].tokens.uncachedInput = 2001;
    const std::vector<Row> byTokens =
        SummaryDisplay::breakdown(cheap, BreakdownMode::model, SummaryUnit::tokens, berlin);
    EXPECT_EQ(byTokens[0],
              (Row{"codex/new", 1, ProviderID::codex, "new", "—", "25.0%", "2.00K", 0.25}));
    EXPECT_EQ(byTokens[1].share, "50.0%");
}

TEST(SummaryDisplay, TitlesDaysInTheUsersZone) {
    EXPECT_THAT(
        SummaryDisplay::breakdown(example(), BreakdownMode::day, SummaryUnit::cost, berlin),
        ElementsAre(
            Row{"day/2026-03-30", 1, std::nullopt, "Mon, Mar 30", "$7.50", "75.0%", "3.00K", 0.75},
            Row{"day/2026-03-09", 2, std::nullopt, "Mon, Mar 9", "$2.50", "25.0%", "1.00K", 0.25}));
    UsageSummary free = example();
    free.totalCostUSD = 0;
    EXPECT_EQ(
        SummaryDisplay::breakdown(free, BreakdownMode::day, SummaryUnit::cost, berlin)[0].share,
        "0%");
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

TEST(DayFormat, IsEnglish) {
    const Date date = *parseISO8601("2026-11-24T23:30:00Z");
    EXPECT_EQ(DayFormat::weekdayAndDay(date, Calendar::utc()), "Tue, Nov 24");
    EXPECT_EQ(DayFormat::weekdayAndDay(date, berlin), "Wed, Nov 25");
    EXPECT_EQ(DayFormat::day(date, berlin), "Nov 25");
    EXPECT_EQ(DayFormat::spoken(date, Calendar::utc()), "Tuesday, November 24, 2026");
}

} // namespace
} // namespace tokwatch

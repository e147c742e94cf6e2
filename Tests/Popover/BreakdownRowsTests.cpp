#include "BreakdownRows.h"
#include "SummaryMaker.h"

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using testing::summaryOf;
using testing::Used;

constexpr auto claude = ProviderID::claude;
constexpr auto grok = ProviderID::grok;

/// Costs that tools report are approximate.
UsageSummary example() {
    return summaryOf("2026-11-24", 30,
                     {{claude, "opus", "2026-11-23", 1'000, 7.5},
                      {grok, "grok\n\"4\", beta", "2026-11-24", 3'000, 2.5},
                      {claude, "new", "2026-11-24", 6'000, -1}});
}

const Calendar utc = Calendar::utc();

TEST(BreakdownRows, LeadWithTheUnitAndRankByIt) {
    const std::vector<BreakdownRow> byCost =
        breakdownRows(example(), BreakdownMode::model, SummaryUnit::cost, utc);
    ASSERT_THAT(byCost, SizeIs(3));
    EXPECT_EQ(byCost[0],
              (BreakdownRow{"claude/opus", "1", "claude", "opus", "~$7.50", "1.00K tokens", "75.0%",
                            "opus, Claude, about $7.50, 1.00K tokens, 75.0% of cost", 0.75, 0}));
    EXPECT_EQ(byCost[1].title, "grok \"4\", beta");
    EXPECT_EQ(byCost[1].series, 2);
    EXPECT_EQ(byCost[2].value, "—");
    EXPECT_EQ(byCost[2].spoken, "new, Claude, price unknown, 6.00K tokens, 0% of cost");

    const std::vector<BreakdownRow> byTokens =
        breakdownRows(example(), BreakdownMode::model, SummaryUnit::tokens, utc);
    ASSERT_THAT(byTokens, SizeIs(3));
    EXPECT_EQ(byTokens[0].id, "claude/new");
    EXPECT_EQ(byTokens[0].rank, "1");
    EXPECT_EQ(byTokens[0].value, "6.00K");
    EXPECT_EQ(byTokens[0].note, "—");
    EXPECT_EQ(byTokens[2].id, "claude/opus");
}

TEST(BreakdownRows, DaysComeNewestFirstWithoutRank) {
    const std::vector<BreakdownRow> rows =
        breakdownRows(example(), BreakdownMode::day, SummaryUnit::cost, utc);
    ASSERT_THAT(rows, SizeIs(2));
    EXPECT_EQ(rows[0],
              (BreakdownRow{"day/2026-11-24", "", "", "Tue, Nov 24", "$2.50", "9.00K tokens",
                            "25.0%", "Tue, Nov 24, $2.50, 9.00K tokens, 25.0% of cost", 0.25, 0}));
    EXPECT_THAT(
        breakdownRows(summaryOf("2026-11-24", 30, {}), BreakdownMode::day, SummaryUnit::cost, utc),
        IsEmpty());
}

TEST(BreakdownRows, AreATableForPeopleAndOneForPrograms) {
    EXPECT_EQ(breakdownTable(example(), BreakdownMode::model, SummaryUnit::cost, utc)
                  .aligned()
                  .toStdString(),
              "#  Provider  Model           Tokens    Cost  Share\n"
              "1  Claude    opus             1.00K  ~$7.50  75.0%\n"
              "2  Grok      grok \"4\", beta   3.00K  ~$2.50  25.0%\n"
              "3  Claude    new              6.00K       —     0%\n");
    EXPECT_EQ(
        breakdownData(example(), BreakdownMode::model, SummaryUnit::cost, utc).csv().toStdString(),
        "Provider,Model,Tokens,Cost (USD),Approximate,Cost share,Token share\r\n"
        "Claude,opus,1000,7.500000,yes,0.750000,0.100000\r\n"
        "Grok,\"grok \"\"4\"\", beta\",3000,2.500000,yes,0.250000,0.300000\r\n"
        "Claude,new,6000,,no,0.000000,0.600000\r\n");
    EXPECT_EQ(breakdownTable(example(), BreakdownMode::day, SummaryUnit::tokens, utc)
                  .aligned()
                  .toStdString(),
              "Day          Tokens   Cost  Share\n"
              "Tue, Nov 24   9.00K  $2.50  90.0%\n"
              "Mon, Nov 23   1.00K  $7.50  10.0%\n");
    EXPECT_EQ(
        breakdownData(example(), BreakdownMode::day, SummaryUnit::cost, utc).csv().toStdString(),
        "Day,Sessions,Tokens,Cost (USD)\r\n"
        "2026-11-24,2,9000,2.500000\r\n"
        "2026-11-23,1,1000,7.500000\r\n");
    EXPECT_THAT(
        breakdownData(summaryOf("2026-11-24", 30, {}), BreakdownMode::model, SummaryUnit::cost, utc)
            .rows,
        IsEmpty());
}

} // namespace
} // namespace tokwatch

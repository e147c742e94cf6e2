#include "KivoLooks/Palette.h"
#include "Tests/Views/SomeSummary.h"
#include "Tokwatch/Views/Popover/PopoverView.h"

#include <gmock/gmock.h>

#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tokwatch::testing {
namespace {

using ::testing::DoubleEq;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using enum ProviderID;

TEST(ChartScale, TicksAreRoundAndReachTheTop) {
    struct Case {
        double most;
        double smallest;
        std::vector<double> ticks;
    };
    for (const Case& c : {Case{10, 0.01, {5, 10}},
                          {10.01, 0.01, {5, 10, 15}},
                          {7.5, 0.01, {2.5, 5, 7.5}},
                          {2.6e9, 1, {1e9, 2e9, 3e9}},
                          {7, 1, {5, 10}},
                          {1, 1, {1}},
                          {0.001, 0.01, {0.01}},
                          {0, 1, {}},
                          {std::numeric_limits<double>::quiet_NaN(), 1, {}},
                          {std::numeric_limits<double>::infinity(), 1, {}}})
        EXPECT_THAT(ChartScale::reaching(c.most, c.smallest).ticks,
                    ::testing::Pointwise(DoubleEq(), c.ticks))
            << c.most;
    for (double most = 0.02; most < 1e15; most *= 1.07) {
        const std::vector<double> found = ChartScale::reaching(most, 0.01).ticks;
        EXPECT_TRUE(found.size() == 2 || found.size() == 3) << most;
        EXPECT_GE(found.back(), most * (1 - 1e-9));
        EXPECT_LT(found[found.size() - 2], most) << "the top is higher than it need be";
    }
}

ChartDays week(SummaryUnit unit) {
    return ChartDays::of(summaryOf("2026-11-24", 7,
                                   {{grok, "grok-4", "2026-11-18", 1'000'000, 1},
                                    {claude, "opus", "2026-11-18", 500'000, 6.5},
                                    {claude, "opus", "2026-11-24", 2'000, 0.5},
                                    // A session alone is nothing to draw.
                                    {codex, "gpt", "2026-11-24", 0, -1},
                                    {claude, "new", "2026-11-21", 7'000, -1}}),
                         unit, Calendar::utc());
}

TEST(ChartDays, StacksTheProvidersUpToTheAxisAndSaysTheirFigures) {
    const ChartDays chart = week(SummaryUnit::cost);
    EXPECT_THAT(chart.series,
                ElementsAre(ChartSeries{"claude", "Claude"}, ChartSeries{"grok", "Grok"}));
    EXPECT_THAT(chart.ticks, ElementsAre(ChartTick{1.0 / 3, "$2.50"}, ChartTick{2.0 / 3, "$5.00"},
                                         ChartTick{1, "$7.50"}));
    EXPECT_THAT(chart.columns[0].parts,
                ElementsAre(ChartPart{0, 6.5 / 7.5}, ChartPart{2, 1 / 7.5}));
    const ChartDays tokens = week(SummaryUnit::tokens);
    EXPECT_THAT(tokens.columns[0].parts,
                ElementsAre(ChartPart{0, 0.5e6 / 1.5e6}, ChartPart{2, 1e6 / 1.5e6}));
    EXPECT_THAT(ChartDays::of(summaryOf("2026-11-24", 2, {{claude, "opus", "2026-11-24", 7, -1}}),
                              SummaryUnit::cost, Calendar::utc())
                    .ticks,
                IsEmpty())
        << "nothing has a price";
    EXPECT_EQ(chart.columns[0].readout,
              (ChartReadout{"Wed, Nov 18",
                            "1.50M tokens",
                            "$7.50",
                            {{"claude", "$6.50"}, {"grok", "$1.00"}},
                            "Wednesday, November 18, 2026: $7.50: Claude $6.50, Grok $1.00. "
                            "1.50M tokens"}));
    EXPECT_EQ(chart.columns[6].readout.title, "Today, Nov 24");
    EXPECT_EQ(chart.columns[3].readout.note, "7.00K tokens") << "without a price, and told";
}

TEST(HeatMapDays, StepsAreQuartersOfTheDaysWithUsage) {
    struct Case {
        std::vector<double> amounts;
        std::vector<int> steps;
    };
    for (const Case& c : {Case{{0, 5, 0}, {0, 3, 0}},
                          {{4, 3, 0, 2, 1}, {4, 3, 0, 2, 1}},
                          {{1, 2, 3, 4'000'000}, {1, 2, 3, 4}},
                          {{1, 1, 1, 1, 1, 1, 1, 9}, {2, 2, 2, 2, 2, 2, 2, 4}},
                          {{0.001, -3}, {3, 0}}})
        EXPECT_EQ(heatMapSteps(c.amounts), c.steps) << ::testing::PrintToString(c.amounts);
}

TEST(HeatMapDays, PutsEachDayOnItsWeekday) {
    struct Case {
        const char* zone;
        const char* lastDay;
        int days, weeks, firstWeekday, lastWeekday;
    };
    for (const Case& c : {
             Case{"UTC", "2026-11-24", 90, 14, 3, 1},         // Thursday to Tuesday
             {"UTC", "2027-01-03", 90, 13, 1, 6},             // over the new year
             {"Europe/Berlin", "2026-10-26", 2, 2, 6, 0},     // a day of 25 hours
             {"America/Sao_Paulo", "2018-11-05", 3, 2, 5, 0}, // a day without midnight
             {"Pacific/Apia", "2011-12-30", 3, 1, 3, 5},      // a Friday that never was
         }) {
        SCOPED_TRACE(c.lastDay);
        const Calendar calendar = *Calendar::named(c.zone);
        const HeatMapDays map = HeatMapDays::of(summaryOf(c.lastDay, c.days, {}, calendar),
                                                SummaryUnit::cost, calendar);
        EXPECT_EQ(map.weeks, c.weeks);
        EXPECT_EQ(map.cells.front().weekday, c.firstWeekday);
        EXPECT_EQ(map.cells.back().weekday, c.lastWeekday);
        std::set<std::pair<int, int>> places;
        for (const HeatMapCell& cell : map.cells)
            EXPECT_TRUE(places.insert({cell.week, cell.weekday}).second) << "two days in one place";
    }
}

} // namespace
} // namespace tokwatch::testing

#include "Tests/Popover/SummaryMaker.h"
#include "Tokwatch/Views/Popover/HeatMapDays.h"

#include <gmock/gmock.h>

#include <set>
#include <utility>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::summaryOf;
using testing::Used;

constexpr auto claude = ProviderID::claude;

TEST(HeatMapDays, StepsAreQuartersOfTheDaysWithUsage) {
    struct Case {
        std::vector<double> amounts;
        std::vector<int> steps;
    };
    for (const Case& c : {
             Case{{}, {}},
             {{0, 0}, {0, 0}},
             {{0, 5, 0}, {0, 3, 0}},
             {{7, 7, 7, 7}, {3, 3, 3, 3}},
             {{4, 3, 0, 2, 1}, {4, 3, 0, 2, 1}},
             // One enormous day does not make the others alike.
             {{1, 2, 3, 4'000'000}, {1, 2, 3, 4}},
             {{1, 100}, {2, 4}},
             {{1, 1, 1, 1, 1, 1, 1, 9}, {2, 2, 2, 2, 2, 2, 2, 4}},
             {{0.001, -3}, {3, 0}},
         })
        EXPECT_EQ(heatMapSteps(c.amounts), c.steps) << ::testing::PrintToString(c.amounts);
}

TEST(HeatMapDays, PutsEachDayOnItsWeekday) {
    struct Case {
        const char* zone;
        const char* lastDay;
        int days;
        int weeks;
        int firstWeekday;
        int lastWeekday;
    };
    for (const Case& c : {
             Case{"UTC", "2026-11-24", 90, 14, 3, 1},         // Thursday to Tuesday
             {"UTC", "2026-11-29", 90, 13, 1, 6},             // the fewest weeks that there are
             {"UTC", "2027-01-03", 90, 13, 1, 6},             // over the new year
             {"UTC", "2028-03-01", 3, 1, 0, 2},               // over a leap day
             {"Europe/Berlin", "2026-10-26", 2, 2, 6, 0},     // a day of 25 hours
             {"America/Sao_Paulo", "2018-11-05", 3, 2, 5, 0}, // a day without midnight
             {"Pacific/Apia", "2011-12-30", 3, 1, 3, 5},      // a Friday that never was
             {"UTC", "2026-11-24", 1, 1, 1, 1},
         }) {
        const Calendar calendar = *Calendar::named(c.zone);
        const HeatMapDays map = HeatMapDays::of(summaryOf(c.lastDay, c.days, {}, calendar),
                                                SummaryUnit::cost, calendar);
        ASSERT_FALSE(map.cells.empty());
        EXPECT_EQ(map.cells.front().weekday, c.firstWeekday) << c.zone << c.lastDay;
        EXPECT_EQ(map.cells.back().weekday, c.lastWeekday) << c.zone << c.lastDay;
        EXPECT_EQ(map.weeks, c.weeks) << c.zone << c.lastDay;
        std::set<std::pair<int, int>> places;
        for (const HeatMapCell& cell : map.cells)
            EXPECT_TRUE(places.insert({cell.week, cell.weekday}).second) << "two days in one place";
    }
}

TEST(HeatMapDays, NamesTheMonthsWhereTheyBegin) {
    const auto months = [](const char* lastDay, int days) {
        std::vector<std::pair<int, QString>> found;
        for (const HeatMapMonth& month :
             HeatMapDays::of(summaryOf(lastDay, days, {}), SummaryUnit::cost, Calendar::utc())
                 .months)
            found.emplace_back(month.week, month.text);
        return found;
    };
    using Month = std::pair<int, QString>;
    // The last days of August leave no room for their name.
    EXPECT_THAT(months("2026-11-24", 90),
                ElementsAre(Month(1, "Sep"), Month(5, "Oct"), Month(9, "Nov")));
    EXPECT_THAT(months("2027-01-20", 60),
                ElementsAre(Month(0, "Nov"), Month(2, "Dec"), Month(6, "Jan")));
    EXPECT_THAT(months("2026-11-24", 1), ElementsAre(Month(0, "Nov")));
}

TEST(HeatMapDays, SaysWhatADayWas) {
    const UsageSummary summary = summaryOf("2026-11-24", 90,
                                           {{claude, "opus", "2026-09-01", 1'000'000, 2},
                                            {claude, "new", "2026-11-24", 5'000, -1},
                                            {claude, "newer", "2026-11-24", 0, -1}});
    const HeatMapDays map = HeatMapDays::of(summary, SummaryUnit::cost, Calendar::utc());
    const HeatMapCell& september = map.cells[5];
    EXPECT_EQ(september.readout,
              (ChartReadout{"Tue, Sep 1",
                            "1.00M tokens · 1 session",
                            "$2.00",
                            {},
                            "Tuesday, September 1, 2026: $2.00. 1.00M tokens, 1 session"}));
    EXPECT_EQ(september.step, 3);
    EXPECT_EQ(map.cells[6].step, 0);
    EXPECT_EQ(map.cells.back().step, 1) << "usage without a price is usage";
    EXPECT_EQ(map.cells.back().readout.title, "Today, Nov 24");
    EXPECT_EQ(map.whole.value, "$2.00");
    EXPECT_EQ(map.whole.note, "1.00M tokens · 3 sessions");
}

} // namespace
} // namespace tokwatch

#include "Tests/Popover/SummaryMaker.h"
#include "Tokwatch/Views/Popover/ChartDays.h"

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::DoubleEq;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::summaryOf;
using testing::Used;

constexpr auto claude = ProviderID::claude;
constexpr auto codex = ProviderID::codex;
constexpr auto grok = ProviderID::grok;

QStringList labels(const ChartDays& chart) {
    QStringList found;
    for (const ChartColumn& column : chart.columns)
        found.append(column.label);
    return found;
}

UsageSummary week() {
    return summaryOf("2026-11-24", 7,
                     {{grok, "grok-4", "2026-11-18", 1'000'000, 1},
                      {claude, "opus", "2026-11-18", 500'000, 6.5},
                      {claude, "opus", "2026-11-24", 2'000, 0.5},
                      {claude, "new", "2026-11-21", 7'000, -1}});
}

TEST(ChartDays, StacksTheProvidersUpToTheAxis) {
    const ChartDays chart = ChartDays::of(week(), SummaryUnit::cost, Calendar::utc());
    ASSERT_EQ(chart.columns.size(), 7U);
    EXPECT_THAT(chart.series,
                ElementsAre(ChartSeries{"claude", "Claude", 0}, ChartSeries{"grok", "Grok", 2}));
    EXPECT_THAT(chart.ticks, ElementsAre(ChartTick{1.0 / 3, "$2.50"}, ChartTick{2.0 / 3, "$5.00"},
                                         ChartTick{1, "$7.50"}));
    EXPECT_THAT(chart.columns[0].parts, ElementsAre(DoubleEq(6.5 / 7.5), DoubleEq(1 / 7.5)));
    EXPECT_THAT(chart.columns[1].parts, ElementsAre(0, 0));
    EXPECT_THAT(chart.columns[6].parts, ElementsAre(DoubleEq(0.5 / 7.5), 0));

    const ChartDays tokens = ChartDays::of(week(), SummaryUnit::tokens, Calendar::utc());
    EXPECT_THAT(tokens.ticks, ElementsAre(ChartTick{1.0 / 3, "500K"}, ChartTick{2.0 / 3, "1M"},
                                          ChartTick{1, "1.5M"}));
    EXPECT_THAT(tokens.columns[0].parts, ElementsAre(DoubleEq(1.0 / 3), DoubleEq(2.0 / 3)));
}

TEST(ChartDays, SaysTheFiguresOfEachDayAndOfAll) {
    const ChartDays chart = ChartDays::of(week(), SummaryUnit::cost, Calendar::utc());
    EXPECT_EQ(chart.columns[0].readout,
              (ChartReadout{"Wed, Nov 18",
                            "1.50M tokens",
                            "$7.50",
                            {"$6.50", "$1.00"},
                            "Wednesday, November 18, 2026: $7.50: Claude $6.50, Grok $1.00. "
                            "1.50M tokens"}));
    EXPECT_EQ(chart.columns[6].readout.title, "Today, Nov 24");
    EXPECT_EQ(chart.columns[6].readout.spoken, "Tuesday, November 24, 2026: $0.50. 2.00K tokens");
    // Tokens without a price are told, though the column is empty.
    EXPECT_EQ(chart.columns[3].readout.value, "$0.00");
    EXPECT_EQ(chart.columns[3].readout.note, "7.00K tokens");
    EXPECT_EQ(chart.whole.title, "Last 7 days");
    EXPECT_EQ(chart.whole.value, "$8.00");
    EXPECT_THAT(chart.whole.figures, ElementsAre("$7.00", "$1.00"));
    EXPECT_EQ(ChartDays::of(week(), SummaryUnit::tokens, Calendar::utc()).whole.note, "$8.00");
}

TEST(ChartDays, MarksTodayAndTheMondays) {
    EXPECT_THAT(labels(ChartDays::of(week(), SummaryUnit::cost, Calendar::utc())),
                ElementsAre("", "", "", "", "", "Nov 23", "Today"));
    // Through a clock change and into the next year, in a zone of its own.
    const Calendar berlin = *Calendar::named("Europe/Berlin");
    const ChartDays spring =
        ChartDays::of(summaryOf("2026-03-31", 3, {{claude, "opus", "2026-03-29", 5, 1}}, berlin),
                      SummaryUnit::cost, berlin);
    EXPECT_THAT(labels(spring), ElementsAre("", "Mar 30", "Today"));
    EXPECT_EQ(spring.columns[0].readout.title, "Sun, Mar 29");
    EXPECT_EQ(spring.columns[0].readout.value, "$1.00");
    const ChartDays newYear =
        ChartDays::of(summaryOf("2027-01-05", 3, {{claude, "opus", "2027-01-05", 5, 1}}),
                      SummaryUnit::cost, Calendar::utc());
    EXPECT_THAT(labels(newYear), ElementsAre("", "Jan 4", "Today"));
}

TEST(ChartDays, LeavesOutProvidersWithoutUsage) {
    // A session alone makes a provider known, but there is nothing of it to draw.
    const ChartDays chart = ChartDays::of(
        summaryOf("2026-11-24", 2,
                  {{codex, "gpt", "2026-11-24", 0, -1}, {claude, "opus", "2026-11-24", 7, -1}}),
        SummaryUnit::cost, Calendar::utc());
    EXPECT_THAT(chart.series, ElementsAre(ChartSeries{"claude", "Claude", 0}));
    EXPECT_THAT(chart.ticks, IsEmpty()) << "nothing has a price";
    EXPECT_THAT(chart.columns.back().parts, ElementsAre(0));
    EXPECT_THAT(
        ChartDays::of(summaryOf("2026-11-24", 30, {}), SummaryUnit::cost, Calendar::utc()).columns,
        IsEmpty());
}

} // namespace
} // namespace tokwatch

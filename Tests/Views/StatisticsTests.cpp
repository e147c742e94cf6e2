#include "KivoLooks/Palette.h"
#include "Tests/Report/ReportFixture.h"
#include "Tests/Views/ViewWorld.h"
#include "Tokwatch/Views/Popover/Models/TableText.h"
#include "Tokwatch/Views/Popover/PopoverView.h"

#include <QAbstractItemModelTester>

#include <gmock/gmock.h>

#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tokwatch {
namespace {

using ::testing::DoubleEq;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using enum ProviderID;

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
UsageSummary summaryOf(const std::string& lastDay, std::int64_t days, const std::vector<Used>& uses,
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

TEST(ProviderMark, HasAColourForEachProvider) {
    for (const bool isDark : {false, true})
        EXPECT_GE(kivo::Palette::of({.dark = isDark}).series.size(), std::ssize(providerTable));
}

TEST(HeatMapDays, StepsAreQuartersOfTheDaysWithUsage) {
    struct Case {
        std::vector<double> amounts;
        std::vector<int> steps;
    };
    for (const Case& c : {Case{{0, 5, 0}, {0, 3, 0}},
                          {{7, 7, 7, 7}, {3, 3, 3, 3}},
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

/// Costs that tools report are approximate.
BreakdownPointer breakdown(Segment::Breakdown mode, SummaryUnit unit) {
    const UsageSummary summary =
        summaryOf("2026-11-24", 30,
                  {{ProviderID::claude, "opus", "2026-11-23", 1'000, 7.5},
                   {ProviderID::grok, "grok\n\"4\", beta", "2026-11-24", 3'000, 2.5},
                   {ProviderID::claude, "new", "2026-11-24", 6'000, -1}});
    switch (mode) {
    case Segment::ByModel:
        return breakdownByModel(summary, unit);
    case Segment::ByDay:
        return breakdownByDay(summary, unit, Calendar::utc());
    case Segment::ByProject:
        break;
    }
    ProjectUsage usage;
    usage.rows = {{"~/src/app, old", 2, {7.5, true, 1'000, 0.75, 0.1}},
                  {"", 1, {std::nullopt, false, 9'000, 0, 0.9}}};
    return breakdownByProject(usage, unit);
}

TEST(Breakdown, LeadsWithTheUnitAndRanksByIt) {
    const BreakdownPointer byCost = breakdown(Segment::ByModel, SummaryUnit::cost);
    ASSERT_EQ(byCost->count(), 3U);
    EXPECT_EQ(
        byCost->row(0),
        (BreakdownRow{"claude/opus", "1", "claude", "opus", "", "~$7.50", "1.00K tokens", "75.0%",
                      "opus, Claude, about $7.50, 1.00K tokens, 75.0% of cost", 0.75}));
    EXPECT_EQ(byCost->row(1).provider, "grok");
    EXPECT_EQ(byCost->row(2).value + byCost->row(2).share, "——");
    EXPECT_EQ(byCost->row(2).spoken, "new, Claude, price unknown, 6.00K tokens");

    const auto firstOf = [](Segment::Breakdown mode) {
        const BreakdownRow first = breakdown(mode, SummaryUnit::tokens)->row(0);
        return (first.rank + " " + first.id + " " + first.value + " " + first.note).toStdString();
    };
    EXPECT_EQ(firstOf(Segment::ByModel), "1 claude/new 6.00K —");
    EXPECT_EQ(firstOf(Segment::ByProject), "1 project/No project told 9.00K —");
    EXPECT_EQ(
        breakdown(Segment::ByDay, SummaryUnit::cost)->row(0),
        (BreakdownRow{"day/2026-11-24", "", "", "Tue, Nov 24", "", "$2.50", "9.00K tokens", "25.0%",
                      "Tue, Nov 24, $2.50, 9.00K tokens, 25.0% of cost", 0.25 / 0.75}))
        << "its bar is a part of the largest day's";
    EXPECT_EQ(breakdown(Segment::ByProject, SummaryUnit::cost)->row(0),
              (BreakdownRow{"project/~/src/app, old", "1", "", "app, old", "~/src/app, old",
                            "~$7.50", "1.00K tokens", "75.0%",
                            "~/src/app, old, about $7.50, 1.00K tokens, 75.0% of cost", 0.75}));
}

TEST(Breakdown, IsATableForPrograms) {
    EXPECT_EQ(breakdown(Segment::ByProject, SummaryUnit::cost)->data().csv().toStdString(),
              "Project,Sessions,Tokens,Cost (USD),Approximate,Cost share,Token share\r\n"
              "\"~/src/app, old\",2,1000,7.500000,yes,0.750000,0.100000\r\n"
              ",1,9000,,no,0.000000,0.900000\r\n");
    EXPECT_EQ(breakdown(Segment::ByModel, SummaryUnit::cost)->data().csv().toStdString(),
              "Provider,Model,Tokens,Cost (USD),Approximate,Cost share,Token share\r\n"
              "Claude,opus,1000,7.500000,yes,0.750000,0.100000\r\n"
              "Grok,\"grok \"\"4\"\", beta\",3000,2.500000,yes,0.250000,0.300000\r\n"
              "Claude,new,6000,,no,0.000000,0.600000\r\n");
}

TEST(TableText, QuotesWhatACSVReaderWouldMistake) {
    for (const auto& [field, written] : {std::pair{"opus-4.5", "opus-4.5"},
                                         {"a,b", "\"a,b\""},
                                         {"the \"best\"", "\"the \"\"best\"\"\""},
                                         {" padded ", "\" padded \""},
                                         {"two\r\nlines", "two  lines"},
                                         {"bell\a", "\"bell \""},
                                         {"\u202Eevil", "\" evil\""},
                                         {"模型-😀", "模型-😀"},
                                         {"", ""}}) {
        const TableText table{{{"Model"}, {"Tokens"}}, {{QString::fromUtf8(field), "7"}}};
        EXPECT_EQ(table.csv().toStdString(), std::string("Model,Tokens\r\n") + written + ",7\r\n");
    }
}

struct StatsViewTest : ::testing::Test, testing::ViewWorld {
    ShownRange range;
    std::optional<PopoverView> popover{std::in_place, *model, clock, range};
    StatsView& stats = *popover->stats();
    ModelsView& models = *popover->models();

    std::string titles() {
        QStringList titles;
        for (int at = 0; at < models.rows()->rowCount(); ++at)
            titles.append(models.rows()
                              ->data(models.rows()->index(at), Qt::UserRole)
                              .value<BreakdownRow>()
                              .title);
        return titles.join(", ").toStdString();
    }
};

TEST_F(StatsViewTest, ComputesNothingWhileItIsNotSeen) {
    stats.setActive(true);
    models.setActive(true);
    settle();
    EXPECT_EQ(models.state().emptyText, "No usage in the last 30 days");
    stats.setActive(false);
    models.setActive(false);
    holdBackground = true;
    use({event("2026-11-24T10:00:00Z", 2)});
    EXPECT_EQ(background.size(), 1U) << "the publishing alone";
    holdBackground = false;
    settle();
    EXPECT_EQ(stats.state().chart.whole.value, "");
    EXPECT_EQ(models.rows()->rowCount(), 0);
    models.setActive(true);
    EXPECT_EQ(models.rows()->rowCount(), 1);
}

TEST_F(StatsViewTest, ShowsTheStoredDaysAsSoonAsTheyAreComputed) {
    use({event("2026-09-01T10:00:00Z", 3), event("2026-11-24T10:00:00Z", 2)});
    holdBackground = true;
    stats.setActive(true);
    settle();
    EXPECT_EQ(stats.state().chart.whole.value, "$2.00") << "what is known is there at once";
    EXPECT_EQ(stats.calendar().cells.size(), 90U) << "the place is held";
    EXPECT_EQ(stats.calendar().whole.value, "$0.00");
    holdBackground = false;
    settle();
    EXPECT_EQ(stats.calendar().whole.value, "$5.00");

    use({event("2026-11-24T11:00:00Z", 4)});
    EXPECT_EQ(stats.calendar().whole.value, "$9.00");
    preferences->summaryUnit = SummaryUnit::tokens;
    settle();
    EXPECT_EQ(stats.calendar().whole.value, "3.00K");
    EXPECT_EQ(stats.state().chart.whole.value, "2.00K");

    // It may go while days are read.
    holdBackground = true;
    model->publish();
    settle();
    popover.reset();
    holdBackground = false;
    settle();
}

TEST_F(StatsViewTest, ShowsTheDaysThatAreChosen) {
    use({event("2026-08-26T10:00:00Z", 8), event("2026-10-25T10:00:00Z", 4),
         event("2026-10-26T10:00:00Z", 2), event("2026-11-18T10:00:00Z", 1)});
    stats.setActive(true);
    models.setActive(true);
    models.setMode(Segment::ByDay);
    for (const auto& [days, columns, whole, listed] :
         {std::tuple{ShownRange::Quarter, 90U, "$7.00", 3},
          {ShownRange::Week, 7U, "$1.00", 1},
          {ShownRange::Month, 30U, "$3.00", 2},
          {ShownRange::Today, 0U, "", 0}}) {
        SCOPED_TRACE(days);
        range.setDays(days);
        settle();
        EXPECT_EQ(stats.state().chart.columns.size(), columns);
        EXPECT_EQ(stats.state().chart.whole.value, whole);
        EXPECT_EQ(models.rows()->rowCount(), listed);
        EXPECT_EQ(stats.calendar().whole.value, "$7.00") << "whatever is chosen";
    }
    EXPECT_EQ(stats.state().emptyText, "No usage today");
    use({event("2026-11-24T11:00:00Z", 16)});
    EXPECT_EQ(stats.state().chart.whole.value, "$16.00");
    holdBackground = true;
    range.setDays(ShownRange::Week);
    settle();
    EXPECT_FALSE(stats.reading().isShown) << "at once, for a person";
    advance(0.2);
    EXPECT_TRUE(stats.reading().isShown);
    EXPECT_EQ(stats.state().chart.whole.value, "$16.00") << "until the others are there";
    // The answer to what nobody asks any more.
    range.setDays(ShownRange::Quarter);
    holdBackground = false;
    settle();
    EXPECT_EQ(stats.state().chart.whole.value, "$23.00");
    EXPECT_FALSE(stats.reading().isShown);
}

TEST_F(StatsViewTest, ReadsProjectsWhileSomebodyWaitsForThem) {
    const std::string app = (home / "src/app").string();
    home.write(".claude/projects/a/1.jsonl",
               testing::Line{"a", 30, "2026-11-24T09:00:00Z", "s1", app}.text() +
                   testing::Line{"b", 5, "2026-10-01T09:00:00Z", "s2", app + "-old"}.text());
    home.write(".claude/projects/a/2.jsonl",
               testing::Line{"c", 10, "2026-11-20T09:00:00Z", "s3", ""}.text());
    models.setActive(true);
    models.setInSight(true);
    holdBackground = true;
    models.setMode(Segment::ByProject);
    settle();
    EXPECT_TRUE(models.state().isWaiting);
    EXPECT_FALSE(models.reading().isShown);
    advance(0.2);
    EXPECT_EQ(models.reading().text, "Reading sessions");
    EXPECT_TRUE(models.reading().isShown);
    holdBackground = false;
    settle();
    EXPECT_FALSE(models.state().isWaiting || models.reading().isShown);
    preferences->summaryUnit = SummaryUnit::tokens;
    settle();
    EXPECT_EQ(titles(), "app, No project told");
    EXPECT_EQ(models.asText().toStdString(), "#  Project          Tokens  Cost  Share\n"
                                             "1  ~/src/app            30     —  75.0%\n"
                                             "2  No project told      10     —  25.0%\n");

    // Days that change while they are read: the first reading is given up.
    holdBackground = true;
    range.setDays(ShownRange::Today);
    range.setDays(ShownRange::Quarter);
    holdBackground = false;
    settle();
    EXPECT_EQ(titles(), "app, No project told, app-old");
    use({event("2026-11-24T10:00:00Z", 2)});
    EXPECT_EQ(models.state().notes, "Excludes models without a published price\n"
                                    "Counts the files that are still there: 45 of 1.00K tokens");
    models.setInSight(false);
    holdBackground = true;
    model->publish();
    settle();
    EXPECT_EQ(background.size(), 1U) << "nobody sees what would be read";
}

/// What a model tells of its changes, which must not contradict each other: "+1-2" for rows that
/// come, "-1-2" for rows that go, ">3-0" for one that moves, "~0-2" for new values, "reset".
class Told {
  public:
    explicit Told(QAbstractItemModel& model) : tester(&model) {
        using Model = QAbstractItemModel;
        const auto rows = [this](const char* sign) {
            return
                [this, sign](const QModelIndex&, int first, int last) { add(sign, first, last); };
        };
        QObject::connect(&model, &Model::rowsInserted, rows("+"));
        QObject::connect(&model, &Model::rowsRemoved, rows("-"));
        QObject::connect(&model, &Model::rowsMoved,
                         [this](auto&&, int from, int, auto&&, int to) { add(">", from, to); });
        QObject::connect(&model, &Model::dataChanged, [this](const auto& first, const auto& last) {
            add("~", first.row(), last.row());
        });
        QObject::connect(&model, &Model::modelReset, [this] { text += "reset "; });
    }
    std::string take() { return std::exchange(text, {}); }

  private:
    void add(const char* sign, int one, int other) {
        text += sign + std::to_string(one) + "-" + std::to_string(other) + " ";
    }
    QAbstractItemModelTester tester;
    std::string text;
};

struct Pair {
    QString id;
    int value = 0;
    friend bool operator==(const Pair&, const Pair&) = default;
};

/// A row for each letter, capitals with another value.
std::vector<Pair> rows(const char* letters) {
    std::vector<Pair> result;
    for (const QChar letter : QString(letters))
        result.push_back({letter.toLower(), letter.isUpper() ? 7 : 0});
    return result;
}

TEST(RowModel, ChangesOnlyWhatDiffers) {
    struct Case {
        const char *before, *after, *told;
    };
    for (const Case& c : {Case{"", "abc", "+0-2 "},
                          {"abc", "", "-0-2 "},
                          {"abc", "abc", ""},
                          {"abc", "aBc", "~1-1 "},
                          {"abc", "ac", "-1-1 "},
                          {"abc", "axc", "-1-1 +1-1 "},
                          {"ab", "aab", "+1-1 "},
                          {"abcd", "dcba", "-0-3 +0-3 "},
                          {"abcd", "DabC", ">3-0 ~0-0 ~3-3 "},
                          {"abcd", "aCdB", ">1-4 ~1-1 ~3-3 "},
                          {"ab", "BA", ">0-2 ~0-0 ~1-1 "}}) {
        RowModel model;
        model.assign(rows(c.before));
        Told told(model);
        model.assign(rows(c.after));
        EXPECT_EQ(told.take(), c.told) << c.before << " to " << c.after;
        EXPECT_EQ(testing::rowsOf<Pair>(model), rows(c.after)) << c.before << " to " << c.after;
    }
}

TEST_F(StatsViewTest, KeepsRowsInPlaceWhileNumbersChange) {
    models.setActive(true);
    use({event("2026-11-23T10:00:00Z", 4)});
    Told told(*models.rows());
    use({event("2026-11-24T10:00:00Z", 3, "sonnet")});
    EXPECT_EQ(told.take(), "+1-1 ~0-0 ");
    use({event("2026-11-24T11:00:00Z", 2, "sonnet")});
    EXPECT_EQ(told.take(), "~0-1 ");
    models.setMode(Segment::ByDay);
    settle();
    EXPECT_EQ(told.take(), "reset ");
}

} // namespace
} // namespace tokwatch

#include "Tests/Report/ReportFixture.h"
#include "Tests/Views/RowChanges.h"
#include "Tests/Views/ViewWorld.h"
#include "Tokwatch/Views/Popover/PopoverView.h"

#include <optional>
#include <string>
#include <tuple>

namespace tokwatch::testing {
namespace {

struct StatsViewTest : ::testing::Test, ViewWorld {
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
               Line{"a", 30, "2026-11-24T09:00:00Z", "s1", app}.text() +
                   Line{"b", 5, "2026-10-01T09:00:00Z", "s2", app + "-old"}.text());
    home.write(".claude/projects/a/2.jsonl",
               Line{"c", 10, "2026-11-20T09:00:00Z", "s3", ""}.text());
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

TEST_F(StatsViewTest, KeepsRowsInPlaceWhileNumbersChange) {
    models.setActive(true);
    use({event("2026-11-23T10:00:00Z", 4)});
    RowChanges told(*models.rows());
    use({event("2026-11-24T10:00:00Z", 3, "sonnet")});
    EXPECT_EQ(told.take(), "+1-1 ~0-0 ");
    use({event("2026-11-24T11:00:00Z", 2, "sonnet")});
    EXPECT_EQ(told.take(), "~0-1 ");
    models.setMode(Segment::ByDay);
    settle();
    EXPECT_EQ(told.take(), "reset ");
}

} // namespace
} // namespace tokwatch::testing

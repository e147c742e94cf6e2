#include "Tests/App/ModelWorld.h"
#include "Tokwatch/Views/Common/ViewClock.h"
#include "Tokwatch/Views/Popover/ModelsView.h"
#include "Tokwatch/Views/Popover/StatsView.h"

#include "TokwatchCore/Support/ISO8601.h"

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using testing::ModelWorld;

/// A model with its two views at noon of one day.
class World : public ModelWorld {
  public:
    World() : ModelWorld(*parseISO8601("2026-11-24T12:00:00Z")) { makeModel(); }

    void use(const char* moment, std::int64_t tokens, double costUSD) {
        UsageEvent event;
        event.model = "opus";
        event.dedupKey = event.sessionID = moment;
        event.timestamp = *parseISO8601(moment);
        event.tokens.output = tokens;
        event.reportedCostUSD = costUSD;
        store->ingest(std::vector{event}, Calendar::utc());
        model->publish();
        settle();
    }

    ViewClock clock{time.clock()};
};

TEST(StatsView, SaysThatThereIsNothing) {
    World world;
    StatsView stats(*world.model, world.clock);
    ModelsView models(*world.model, world.clock);
    stats.setActive(true);
    models.setActive(true);
    EXPECT_EQ(stats.state().emptyText, "No usage in the last 30 days");
    EXPECT_EQ(models.emptyText(), "No usage in the last 30 days");
    world.use("2026-11-24T10:00:00Z", 1000, 2);
    EXPECT_EQ(stats.state().emptyText, "");
    EXPECT_EQ(stats.state().tiles.size(), 5);
    EXPECT_EQ(models.emptyText(), "");
    EXPECT_EQ(models.rows()->rowCount(), 1);
    EXPECT_EQ(models.notes(), "~ Priced like a similar model, or as its tool reported");
}

TEST(StatsView, ShowsTheStoredDaysAsSoonAsTheyAreComputed) {
    World world;
    world.use("2026-09-01T10:00:00Z", 1000, 3);
    world.use("2026-11-24T10:00:00Z", 1000, 2);
    StatsView view(*world.model, world.clock);
    world.holdBackground = true;
    view.setActive(true);
    world.settle();
    EXPECT_EQ(view.state().chart.whole.value, "$2.00") << "what is known is there at once";
    EXPECT_EQ(view.calendar().cells.size(), 90U) << "the place is held";
    EXPECT_EQ(view.calendar().whole.value, "$0.00");
    world.holdBackground = false;
    world.settle();
    EXPECT_EQ(view.calendar().whole.value, "$5.00");
    EXPECT_EQ(view.calendar().cells.back().readout.title, "Today, Nov 24");

    world.use("2026-11-24T11:00:00Z", 1000, 4);
    EXPECT_EQ(view.calendar().whole.value, "$9.00");
    world.preferences->summaryUnit = SummaryUnit::tokens;
    world.settle();
    EXPECT_EQ(view.calendar().whole.value, "3.00K");
    EXPECT_EQ(view.state().chart.whole.value, "2.00K");
}

TEST(StatsView, ComputesNothingWhileItIsNotSeen) {
    World world;
    StatsView stats(*world.model, world.clock);
    ModelsView models(*world.model, world.clock);
    stats.setActive(true);
    models.setActive(true);
    world.settle();
    stats.setActive(false);
    models.setActive(false);
    world.holdBackground = true;
    world.use("2026-11-24T10:00:00Z", 1000, 2);
    EXPECT_EQ(world.background.size(), 1U) << "the publishing alone";
    world.holdBackground = false;
    world.settle();
    EXPECT_EQ(stats.state().chart.whole.value, "");
    EXPECT_EQ(models.rows()->rowCount(), 0);
    models.setActive(true);
    EXPECT_EQ(models.rows()->rowCount(), 1);
}

TEST(StatsView, SurvivesItsOwnEndWhileDaysAreRead) {
    World world;
    world.use("2026-11-24T10:00:00Z", 1000, 2);
    auto view = std::make_unique<StatsView>(*world.model, world.clock);
    view->setActive(true);
    world.settle();
    world.holdBackground = true;
    world.model->publish();
    world.settle();
    view.reset();
    world.holdBackground = false;
    world.settle();
    SUCCEED();
}

TEST(ModelsView, ChangesBetweenModelsAndDays) {
    World world;
    world.use("2026-11-23T10:00:00Z", 1000, 2);
    world.use("2026-11-24T10:00:00Z", 1000, 2);
    ModelsView view(*world.model, world.clock);
    view.setActive(true);
    EXPECT_EQ(view.rows()->rowCount(), 1);
    EXPECT_TRUE(view.asText().startsWith("#  Provider  Model")) << view.asText().toStdString();
    view.setMode(1);
    world.settle();
    EXPECT_EQ(view.rows()->rowCount(), 2);
    EXPECT_TRUE(view.asCSV().startsWith("Day,Sessions,")) << view.asCSV().toStdString();
}

} // namespace
} // namespace tokwatch

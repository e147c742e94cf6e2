#include "Tokwatch/Display/ObservingUpdater.h"

#include "Tests/Support/EventLoop.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using testing::settle;

class ObservingUpdaterTest : public ::testing::Test {
  protected:
    ObservingUpdaterTest() { testing::needEventLoop(); }

    QProperty<bool> chooseSecond{false};
    QProperty<std::string> first{"a"};
    QProperty<std::string> second{"b"};
    std::vector<std::string> applied;
    std::unique_ptr<ObservingUpdater<std::string>> updater =
        std::make_unique<ObservingUpdater<std::string>>(
            [this] { return chooseSecond ? second.value() : first.value(); },
            [this](const std::string& value) { applied.push_back(value); });
};

TEST_F(ObservingUpdaterTest, ComputesAgainAfterAChange) {
    EXPECT_FALSE(updater->isArmed());
    updater->arm();
    updater->arm();
    settle();
    EXPECT_TRUE(updater->isArmed());
    EXPECT_EQ(updater->armCount(), 1);
    first = "c";
    EXPECT_FALSE(updater->isArmed());
    EXPECT_THAT(applied, ElementsAre("a")); // not in the middle of the change
    settle();
    first = "d";
    settle();
    EXPECT_THAT(applied, ElementsAre("a", "c", "d"));
    EXPECT_EQ(updater->armCount(), 3);
}

TEST_F(ObservingUpdaterTest, ComputesOnceForManyChanges) {
    updater->arm();
    first = "c";
    chooseSecond = true;
    second = "e";
    settle();
    EXPECT_THAT(applied, ElementsAre("a", "e"));
}

TEST_F(ObservingUpdaterTest, FollowsOnlyWhatTheLastComputationRead) {
    updater->arm();
    second = "x";
    settle();
    EXPECT_EQ(updater->armCount(), 1);
    chooseSecond = true;
    settle();
    first = "y";
    first = "z";
    settle();
    EXPECT_EQ(updater->armCount(), 2);
    second = "w";
    settle();
    EXPECT_THAT(applied, ElementsAre("a", "x", "w"));
}

TEST_F(ObservingUpdaterTest, ArmingByHandTakesAWaitingChangeAlong) {
    updater->arm();
    first = "c";
    updater->arm();
    settle();
    EXPECT_THAT(applied, ElementsAre("a", "c"));
}

TEST_F(ObservingUpdaterTest, MayEndWithAChangeWaiting) {
    updater->arm();
    first = "c";
    updater.reset();
    first = "d";
    settle();
    EXPECT_THAT(applied, ElementsAre("a"));
}

} // namespace
} // namespace tokwatch

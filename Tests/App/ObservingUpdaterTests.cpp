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

TEST_F(ObservingUpdaterTest, ComputesOnceAfterChangesOfWhatItLastRead) {
    updater->arm();
    updater->arm();
    settle();
    second = "x"; // which it did not read
    settle();
    EXPECT_EQ(updater->armCount(), 1);
    first = "c";
    EXPECT_FALSE(updater->isArmed());
    EXPECT_THAT(applied, ElementsAre("a")) << "not in the middle of the change";
    first = "d";
    chooseSecond = true;
    settle();
    EXPECT_TRUE(updater->isArmed());
    first = "y";
    settle();
    EXPECT_EQ(updater->armCount(), 2);
    second = "w";
    updater->arm(); // takes the waiting change along
    settle();
    EXPECT_THAT(applied, ElementsAre("a", "x", "w"));
    second = "z";
    updater.reset();
    settle();
    EXPECT_EQ(applied.size(), 3U) << "it may end with a change waiting";
}

} // namespace
} // namespace tokwatch

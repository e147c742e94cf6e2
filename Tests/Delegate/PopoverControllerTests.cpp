#include "Tokwatch/Desktop/PopoverController.h"

#include "Tokwatch/Desktop/StatusAreaAdvice.h"

#include <QSize>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace tokwatch {
namespace {

/// A popover that notes what is asked of it.
struct FakeHost final : PopoverHost {
    bool shown = false;
    double natural = 0;
    double visible = 1000;
    std::vector<QSize> sizes;
    PopoverController* controller = nullptr;

    bool isShown() const override { return shown; }
    void show(QPoint, int width, int height) override {
        shown = true;
        sizes.emplace_back(width, height);
    }
    void resize(int width, int height) override { sizes.emplace_back(width, height); }
    void close() override {
        shown = false;
        controller->closed();
    }
    double contentHeight() override { return natural; }
    double visibleHeight(QPoint) const override { return visible; }
};

class PopoverControllerTest : public ::testing::Test {
  protected:
    PopoverControllerTest() { host.controller = &controller; }
    void click() { controller.toggle({1200, 10}); }

    FakeHost host;
    Date now = dateFromUnixSeconds(1'768'000'000);
    int openings = 0;
    PopoverController controller{host, [this] { return now; }, [this] { ++openings; }};
};

TEST_F(PopoverControllerTest, OpensAndClosesByClicksButNotByTheOneThatClosedIt) {
    click();
    EXPECT_TRUE(host.shown);
    EXPECT_EQ(openings, 1);
    click();
    EXPECT_FALSE(host.shown);

    now += PopoverController::reopenGuard;
    click();
    EXPECT_FALSE(host.shown) << "the guard has not passed yet";
    now += Seconds{0.01};
    click();
    EXPECT_TRUE(host.shown);

    host.close(); // by a press outside
    click();
    EXPECT_FALSE(host.shown);
    now -= Seconds{3600};
    click();
    EXPECT_TRUE(host.shown) << "a clock that was set back keeps it shut";
    controller.close();
    controller.open({1200, 10});
    EXPECT_TRUE(host.shown) << "who asks for it gets it at once";
}

TEST_F(PopoverControllerTest, IsAsHighAsItsContentUpToFourFifthsOfTheScreen) {
    struct Case {
        double natural;
        double visible;
        int height;
    };
    for (const auto& [natural, visible, height] :
         {Case{900, 1000, 800}, Case{500.2, 1000, 501}, Case{800, 1000, 800}, Case{0, 1000, 800},
          Case{900, 693, 554}}) {
        host.natural = natural;
        host.visible = visible;
        controller.open({1200, 10});
        EXPECT_EQ(host.sizes.back(), QSize(420, height)) << natural << " of " << visible;
        controller.close();
    }
}

TEST_F(PopoverControllerTest, FollowsItsContentOnlyWhileItIsShown) {
    controller.contentHeightChanged();
    EXPECT_TRUE(host.sizes.empty());
    host.natural = 300;
    click();
    host.natural = 410.5;
    controller.contentHeightChanged();
    EXPECT_EQ(host.sizes, (std::vector{QSize(420, 300), QSize(420, 411)}));
}

TEST(StatusAreaAdvice, NamesWhatTheDesktopHas) {
    const auto advice = [](const char* desktop) { return statusAreaAdvice(desktop).toStdString(); };
    EXPECT_THAT(advice("ubuntu:GNOME"), ::testing::HasSubstr("AppIndicator"));
    EXPECT_THAT(advice("xfce"), ::testing::HasSubstr("Status Tray"));
    EXPECT_THAT(advice("sway"), ::testing::HasSubstr("waybar"));
    EXPECT_THAT(advice(""), ::testing::HasSubstr("status notifier area"));
}

} // namespace
} // namespace tokwatch

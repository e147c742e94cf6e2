#include "KivoPanel/FloatingPanel.h"
#include "KivoPanel/PanelPlacement.h"
#include "KivoPanel/PopupPanel.h"
#include "KivoPanel/SavedFrame.h"
#include "Tests/Support/EventLoop.h"
#include "Tokwatch/Desktop/StatusAreaPlace.h"

#include <QMouseEvent>
#include <QScreen>
#include <QSignalSpy>
#include <QWindow>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace kivo {
namespace {

const QRect belowAPanel(0, 30, 1920, 1050);
const QRect aboveAPanel(0, 0, 1920, 1050);

TEST(PanelPlacement, PutsAPanelAtWhatOpenedItAndInsideTheVisibleFrame) {
    struct Case {
        const char* what;
        QPoint anchor;
        QRect visibleFrame;
        QPoint topLeft;
    };
    for (const Case& c : {
             Case{"centred below an upper panel", {1000, 10}, belowAPanel, {790, 38}},
             {"centred above a lower panel", {1000, 1070}, aboveAPanel, {790, 442}},
             {"not beyond the right edge", {1910, 10}, belowAPanel, {1492, 38}},
             {"not beyond the left edge", {3, 10}, belowAPanel, {8, 38}},
             {"on the second screen", {3190, 10}, {1920, 30, 1280, 994}, {2772, 38}},
             {"beside a press on a bar that nobody told of", {1000, 16}, aboveAPanel, {790, 40}},
             {"the same at the lower edge", {1000, 1040}, belowAPanel, {790, 417}},
             {"its corner visible on one too small", {100, 390}, {0, 0, 400, 400}, {8, 8}},
         })
        EXPECT_EQ(panelRect({420, 600}, c.anchor, c.visibleFrame),
                  QRect(c.topLeft, QSize(420, 600)))
            << c.what;
    EXPECT_EQ(menuRect({180, 150}, {100, 50}, belowAPanel).topLeft(), QPoint(101, 51));
    EXPECT_EQ(menuRect({180, 150}, {1900, 1000}, belowAPanel).topLeft(), QPoint(1720, 850));
}

TEST(PanelPlacement, GuessesTheStatusAreaAtTheEndOfThePanel) {
    using tokwatch::likelyStatusArea;
    const QRect screen(0, 0, 1920, 1080);
    EXPECT_EQ(likelyStatusArea(screen, belowAPanel, false), QPoint(1919, 0));
    EXPECT_EQ(likelyStatusArea(screen, aboveAPanel, true), QPoint(0, 1079));
}

TEST(SavedFrames, ComeBackOnTheirScreenAndOnAVisiblePlaceWhereItIsGone) {
    const ScreenArea laptop{"eDP-1", {0, 0, 1280, 800}, {0, 30, 1280, 770}};
    const ScreenArea monitor{"HDMI-1", {1280, -100, 1920, 1080}, {1280, -100, 1920, 1040}};
    const QList<ScreenArea> both{laptop, monitor};
    const QRect onLaptop(40, 50, 240, 140);
    const QRect onMonitor(2900, 700, 240, 140);
    const SavedFrames left = remembering(remembering({}, onLaptop, both), onMonitor, both);
    struct Case {
        const char* what;
        SavedFrames frames;
        QList<ScreenArea> screens;
        QRect place;
    };
    for (const Case& c : {
             Case{"where it was left last", left, both, onMonitor},
             {"its screen is gone: where it was on the other", left, {laptop}, onLaptop},
             {"on a screen that moved",
              left,
              {laptop, {"HDMI-1", {-1920, 0, 1920, 1080}, {-1920, 0, 1920, 1040}}},
              onMonitor.translated(-3200, 100)},
             {"on none of its screens: inside the first",
              {left[0]},
              {laptop},
              {1040, 660, 240, 140}},
             {"moved back on the other", remembering(left, onLaptop, both), both, onLaptop},
             {"below a bar", remembering({}, {-9, 3, 240, 140}, both), both, {0, 30, 240, 140}},
             {"larger than a screen", SavedFrames{{"eDP-1", {5, 40, 4000, 3000}}}, both,
              laptop.visible},
             {"nowhere yet", {}, both, {}},
             {"without a screen", left, {}, {}},
         }) {
        EXPECT_EQ(visiblePlace(c.frames, c.screens), c.place) << c.what;
        EXPECT_EQ(savedFramesFrom(textOf(c.frames)), c.frames) << c.what;
    }
    EXPECT_EQ(savedFramesFrom(u"1 2 3 4 Lid 2\n\n1 2 3\n1 2 0 4 x\n9999999 2 3 4 x\n1 2 3 4"),
              (SavedFrames{{"Lid 2", {1, 2, 3, 4}}, {"", {1, 2, 3, 4}}}));
}

TEST(FloatingPanel, TellsOfAMoveThatIsFollowedByItsEnd) {
    const std::function<void(std::unique_ptr<FloatingPanel>&)> ends[]{
        [](auto& panel) { panel->close(); },
        [](auto& panel) { panel.reset(); }, // as when its window is made anew
    };
    for (const auto& end : ends) {
        QWindow window;
        auto panel = std::make_unique<FloatingPanel>(window, SavedFrames());
        QPoint told;
        panel->onMoved = [&](const SavedFrames& frames) { told = frames.back().frame.topLeft(); };
        panel->open({600, 4}, {240, 140}, FloatingPanel::Keyboard::stays);
        panel->startMove();
        window.setPosition(70, 80);
        tokwatch::testing::settle();
        end(panel);
        EXPECT_EQ(told, QPoint(70, 80)) << &end - ends;
    }
}

struct PopupPanelTest : ::testing::Test {
    PopupPanelTest() { panel.open(anchor, size); }

    QRect expected(QSize ofSize) const {
        return panelRect(ofSize, anchor, window.screen()->availableGeometry());
    }
    void pressAt(int x, int y) {
        const QPointF position(x, y);
        QMouseEvent press(QEvent::MouseButtonPress, position, position, Qt::LeftButton,
                          Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&window, &press);
    }

    const QPoint anchor{600, 4};
    const QSize size{420, 300};
    QWindow window;
    PopupPanel panel{window};
    QSignalSpy closings{&panel, &PopupPanel::closed};
};

TEST_F(PopupPanelTest, StaysAtItsAnchorWhateverItsSize) {
    EXPECT_EQ(window.geometry(), expected(size));
    // Compositors that tile windows leave those alone.
    EXPECT_EQ(window.minimumSize(), window.maximumSize());
    panel.resize({420, 512});
    EXPECT_EQ(window.geometry(), expected({420, 512}));
    panel.close();
    panel.resize({420, 100});
    EXPECT_EQ(window.height(), 512) << "nobody sees it; the next opening tells its size";
}

TEST_F(PopupPanelTest, ClosesOnceHoweverItIsClosedAndNotByWhatHappensInside) {
    QFocusEvent out(QEvent::FocusOut, Qt::OtherFocusReason);
    const std::function<void()> ways[]{
        [this] { pressAt(-5, 20); },
        [this] { pressAt(20, 300); },
        [&] { QCoreApplication::sendEvent(&window, &out); },
        [this] { window.close(); },
        [this] { window.hide(); },
        [this] { panel.close(); },
    };
    for (const auto& way : ways) {
        SCOPED_TRACE(&way - ways);
        panel.open(anchor, size);
        closings.clear();
        pressAt(0, 0);
        pressAt(419, 299);
        EXPECT_TRUE(panel.isOpen());
        way();
        tokwatch::testing::settle();
        EXPECT_FALSE(panel.isOpen());
        EXPECT_FALSE(window.isVisible());
        EXPECT_EQ(closings.count(), 1);
    }
}

} // namespace
} // namespace kivo

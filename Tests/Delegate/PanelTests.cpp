#include "KivoPanel/PanelPlacement.h"
#include "KivoPanel/PopupPanel.h"
#include "Tests/Support/EventLoop.h"
#include "Tokwatch/Desktop/StatusAreaPlace.h"

#include <QMouseEvent>
#include <QScreen>
#include <QSignalSpy>
#include <QWindow>

#include <gtest/gtest.h>

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
}

TEST(PanelPlacement, GuessesTheStatusAreaAtTheEndOfThePanel) {
    using tokwatch::likelyStatusArea;
    const QRect screen(0, 0, 1920, 1080);
    EXPECT_EQ(likelyStatusArea(screen, belowAPanel, false), QPoint(1919, 0));
    EXPECT_EQ(likelyStatusArea(screen, aboveAPanel, true), QPoint(0, 1079));
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

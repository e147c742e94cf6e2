#include "KivoPanel/PopupPanel.h"

#include "KivoPanel/PanelPlacement.h"
#include "Tests/Support/EventLoop.h"

#include <QMouseEvent>
#include <QScreen>
#include <QSignalSpy>
#include <QWindow>

#include <gtest/gtest.h>

namespace kivo {
namespace {

class PopupPanelTest : public ::testing::Test {
  protected:
    PopupPanelTest() { panel.open(anchor, size); }

    QRect expected(QSize ofSize) const {
        return panelRect(ofSize, anchor, window.screen()->availableGeometry());
    }
    void pressAt(QPointF position) {
        QMouseEvent press(QEvent::MouseButtonPress, position, position, Qt::LeftButton,
                          Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&window, &press);
    }

    static constexpr QPoint anchor{600, 4};
    static constexpr QSize size{420, 300};
    QWindow window;
    PopupPanel panel{window};
    QSignalSpy closings{&panel, &PopupPanel::closed};
};

TEST_F(PopupPanelTest, StaysAtItsAnchorWhateverItsSize) {
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(window.flags().testFlag(Qt::FramelessWindowHint));
    EXPECT_EQ(window.geometry(), expected(size));
    // Compositors that tile windows leave those alone.
    EXPECT_EQ(window.minimumSize(), size);
    EXPECT_EQ(window.maximumSize(), size);
    panel.resize({420, 512});
    EXPECT_EQ(window.geometry(), expected({420, 512}));
    panel.close();
    panel.resize({420, 100});
    EXPECT_EQ(window.height(), 512) << "nobody sees it; the next opening tells its size";
}

TEST_F(PopupPanelTest, ClosesOnceHoweverItIsClosed) {
    struct Case {
        const char* what;
        std::function<void()> act;
    };
    const Case cases[]{
        {"by a press beside it",
         [this] {
             pressAt({-5, 20});
         }},
        {"by a press below it",
         [this] {
             pressAt({20, 300});
         }},
        {"by losing the keyboard",
         [this] {
             QFocusEvent out(QEvent::FocusOut, Qt::OtherFocusReason);
             QCoreApplication::sendEvent(&window, &out);
         }},
        {"by the window manager", [this] { window.close(); }},
        {"by itself", [this] { window.hide(); }},
        {"by the program", [this] { panel.close(); }},
    };
    for (const Case& each : cases) {
        panel.open(anchor, size);
        closings.clear();
        each.act();
        tokwatch::testing::settle();
        EXPECT_FALSE(panel.isOpen()) << each.what;
        EXPECT_FALSE(window.isVisible()) << each.what;
        EXPECT_EQ(closings.count(), 1) << each.what;
    }
}

TEST_F(PopupPanelTest, StaysOpenForWhatHappensInside) {
    pressAt({0, 0});
    pressAt({419, 299});
    EXPECT_TRUE(panel.isOpen());
    EXPECT_EQ(closings.count(), 0);
}

} // namespace
} // namespace kivo

#include "Tokwatch/Views/Menu/MenuView.h"

#include "Tests/Support/EventLoop.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace tokwatch {
namespace {

TEST(MenuView, IsUsedByKeyboardAndRunsWhatWasChosenOnceItIsClosed) {
    testing::needEventLoop();
    int refreshes = 0;
    MenuView view({{"Refresh", QKeySequence(Qt::CTRL | Qt::Key_R), [&] { ++refreshes; }},
                   kivo::MenuEntry::separator(),
                   {"Quit", {}, {}}});
    ASSERT_EQ(view.rows().size(), 3);
    EXPECT_EQ(view.rows()[0].value<MenuRow>().shortcut, "Ctrl+R");

    QStringList walk;
    for (const int direction : {1, 1, 1, -1, -1}) {
        view.move(direction);
        walk.append(QString::number(view.current()));
    }
    EXPECT_EQ(walk.join(' '), "0 2 0 2 0");
    view.setCurrent(1);
    EXPECT_EQ(view.current(), -1) << "at a separator";
    view.move(-1);
    EXPECT_EQ(view.current(), 2);

    QSignalSpy closed(&view, &MenuView::closeRequested);
    view.choose(1);
    EXPECT_EQ(closed.count(), 0);
    view.choose(0);
    EXPECT_EQ(closed.count(), 1);
    EXPECT_EQ(refreshes, 0);
    testing::settle();
    EXPECT_EQ(refreshes, 1);
}

} // namespace
} // namespace tokwatch

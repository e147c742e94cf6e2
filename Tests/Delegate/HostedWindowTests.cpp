#include "Tokwatch/Desktop/HostedWindow.h"

#include "Tests/Support/CapturedLog.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/ManualScheduler.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QSignalSpy>

#include <gmock/gmock.h>

#include <memory>

namespace tokwatch {
namespace {

using namespace tokwatch::testing;

constexpr auto content = R"(
    import QtQuick
    Item {
        property QtObject view
        readonly property bool isMirrored: inner.LayoutMirroring.enabled
        Item { Item { id: inner } }
    })";

class HostedWindowTest : public ::testing::Test {
  protected:
    HostedWindow::Content contentOf(const char* qml) {
        home.write("Content.qml", qml);
        const std::filesystem::path file = home / "Content.qml";
        return {QUrl::fromLocalFile(QString::fromStdString(file.string())), [this] {
                    ++viewsMade;
                    return std::make_unique<QObject>();
                }};
    }
    bool isEngineThere() {
        // Asking for one would make one.
        return !engine.expired();
    }
    void open(HostedWindow& window) {
        window.window().show();
        engine = runtime.engine();
    }

    TemporaryDirectory home;
    ManualScheduler time;
    kivo::Theme theme{kivo::Appearance{}};
    QmlRuntime runtime{theme};
    std::weak_ptr<QQmlEngine> engine;
    int viewsMade = 0;
};

TEST_F(HostedWindowTest, IsKeptForAWhileAndThenGivenBackWithItsEngine) {
    HostedWindow hosted(runtime, time, contentOf(content));
    EXPECT_EQ(hosted.existing(), nullptr);
    open(hosted);
    const QQuickView* first = hosted.existing();
    hosted.letGo();
    time.advance(HostedWindow::keepTime - Seconds{1});
    open(hosted);
    EXPECT_EQ(hosted.existing(), first) << "it was made anew for a quick return";
    time.advance(HostedWindow::keepTime * 2);
    EXPECT_EQ(hosted.existing(), first) << "it went while it was shown";

    bool wasThere = false;
    QObject::connect(&hosted, &HostedWindow::released,
                     [&] { wasThere = hosted.existing() != nullptr && hosted.view() != nullptr; });
    hosted.letGo();
    time.advance(HostedWindow::keepTime);
    EXPECT_TRUE(wasThere) << "who holds on to it must hear before it is gone";
    EXPECT_EQ(hosted.existing(), nullptr);
    EXPECT_EQ(hosted.view(), nullptr);
    EXPECT_FALSE(isEngineThere());
    open(hosted);
    EXPECT_EQ(viewsMade, 2);
}

TEST_F(HostedWindowTest, SharesTheEngineUntilTheLastWindowWent) {
    HostedWindow one(runtime, time, contentOf(content));
    HostedWindow other(runtime, time, contentOf(content));
    open(one);
    open(other);
    EXPECT_EQ(one.existing()->engine(), other.existing()->engine());
    one.letGo();
    time.advance(HostedWindow::keepTime);
    EXPECT_TRUE(isEngineThere());
    other.release();
    EXPECT_FALSE(isEngineThere());
}

TEST_F(HostedWindowTest, FollowsTheThemeWhileItIsShown) {
    HostedWindow hosted(runtime, time, contentOf(content));
    open(hosted);
    const QColor light = hosted.existing()->color();
    theme.setAppearance({.dark = true});
    EXPECT_NE(hosted.existing()->color(), light);
    EXPECT_EQ(hosted.existing()->color(), theme.colors().canvas);
    hosted.setTranslucent(true);
    theme.setAppearance({});
    EXPECT_EQ(hosted.existing()->color().alpha(), 0) << "the content has corners of its own";
}

TEST_F(HostedWindowTest, IsMirroredWhereTheDesktopReadsFromTheRight) {
    for (const Qt::LayoutDirection direction : {Qt::RightToLeft, Qt::LeftToRight}) {
        QGuiApplication::setLayoutDirection(direction);
        HostedWindow hosted(runtime, time, contentOf(content));
        open(hosted);
        EXPECT_EQ(hosted.existing()->rootObject()->property("isMirrored").toBool(),
                  direction == Qt::RightToLeft);
    }
}

TEST_F(HostedWindowTest, SaysWhatIsWrongWithItsContent) {
    CapturedLog log;
    HostedWindow hosted(runtime, time, contentOf("import QtQuick\nItem { nonsense: 1 }"));
    open(hosted);
    EXPECT_THAT(log.lines(), ::testing::Contains(::testing::HasSubstr("nonsense")));
}

} // namespace
} // namespace tokwatch

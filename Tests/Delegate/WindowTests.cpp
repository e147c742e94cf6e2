#include "Tests/Support/ManualScheduler.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tokwatch/Desktop/QmlWindow.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>

#include <gmock/gmock.h>

#include <memory>

namespace tokwatch {
namespace {

using namespace tokwatch::testing;

constexpr auto qml = R"(
    import QtQuick
    Item {
        property QtObject view
        readonly property bool isMirrored: inner.LayoutMirroring.enabled
        Item { Item { id: inner } }
    })";

struct QmlWindowTest : ::testing::Test {
    QmlWindow::Content content() {
        const std::filesystem::path file = home.write("Content.qml", qml);
        return {QUrl::fromLocalFile(QString::fromStdString(file.string())), [this] {
                    ++viewsMade;
                    return std::make_unique<QObject>();
                }};
    }
    QQuickView* open(QmlWindow& window) {
        window.window().show();
        engine = runtime.engine(); // asking for one would make one
        return window.existing();
    }

    TemporaryDirectory home;
    ManualScheduler time;
    kivo::Theme theme{kivo::Appearance{}};
    QmlRuntime runtime{theme};
    std::weak_ptr<QQmlEngine> engine;
    int viewsMade = 0;
};

TEST_F(QmlWindowTest, IsKeptForAWhileAndThenGivenBackTheLastOneWithTheEngine) {
    QmlWindow kept(runtime, time, content());
    QmlWindow other(runtime, time, content());
    EXPECT_EQ(kept.existing(), nullptr);
    const QQuickView* first = open(kept);
    EXPECT_EQ(first->engine(), open(other)->engine());
    kept.letGo();
    time.advance(QmlWindow::keepTime - Seconds{1});
    EXPECT_EQ(open(kept), first) << "it was made anew for a quick return";
    time.advance(QmlWindow::keepTime * 2);
    EXPECT_EQ(kept.existing(), first) << "it went while it was shown";

    bool wasThere = false;
    QObject::connect(&kept, &QmlWindow::released,
                     [&] { wasThere = kept.existing() != nullptr && kept.view() != nullptr; });
    kept.letGo();
    time.advance(QmlWindow::keepTime);
    EXPECT_TRUE(wasThere) << "who holds on to it must hear before it is gone";
    EXPECT_EQ(kept.existing(), nullptr);
    EXPECT_EQ(kept.view(), nullptr);
    EXPECT_FALSE(engine.expired());
    other.release();
    EXPECT_TRUE(engine.expired());
    open(kept);
    EXPECT_EQ(viewsMade, 3);
}

TEST_F(QmlWindowTest, IsMirroredWhereTheDesktopReadsFromTheRight) {
    for (const Qt::LayoutDirection direction : {Qt::RightToLeft, Qt::LeftToRight}) {
        QGuiApplication::setLayoutDirection(direction);
        QmlWindow kept(runtime, time, content());
        EXPECT_EQ(open(kept)->rootObject()->property("isMirrored").toBool(),
                  direction == Qt::RightToLeft);
    }
}

} // namespace
} // namespace tokwatch

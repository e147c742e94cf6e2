#include "Tests/Support/ManualScheduler.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tokwatch/Desktop/HostedWindow.h"
#include "Tokwatch/Desktop/PopoverController.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QSize>

#include <gmock/gmock.h>

#include <memory>
#include <vector>

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

struct HostedWindowTest : ::testing::Test {
    HostedWindow::Content content() {
        const std::filesystem::path file = home.write("Content.qml", qml);
        return {QUrl::fromLocalFile(QString::fromStdString(file.string())), [this] {
                    ++viewsMade;
                    return std::make_unique<QObject>();
                }};
    }
    QQuickView* open(HostedWindow& window) {
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

TEST_F(HostedWindowTest, IsKeptForAWhileAndThenGivenBackTheLastOneWithTheEngine) {
    HostedWindow hosted(runtime, time, content());
    HostedWindow other(runtime, time, content());
    EXPECT_EQ(hosted.existing(), nullptr);
    const QQuickView* first = open(hosted);
    EXPECT_EQ(first->engine(), open(other)->engine());
    hosted.letGo();
    time.advance(HostedWindow::keepTime - Seconds{1});
    EXPECT_EQ(open(hosted), first) << "it was made anew for a quick return";
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
    EXPECT_FALSE(engine.expired());
    other.release();
    EXPECT_TRUE(engine.expired());
    open(hosted);
    EXPECT_EQ(viewsMade, 3);
}

TEST_F(HostedWindowTest, IsMirroredWhereTheDesktopReadsFromTheRight) {
    for (const Qt::LayoutDirection direction : {Qt::RightToLeft, Qt::LeftToRight}) {
        QGuiApplication::setLayoutDirection(direction);
        HostedWindow hosted(runtime, time, content());
        EXPECT_EQ(open(hosted)->rootObject()->property("isMirrored").toBool(),
                  direction == Qt::RightToLeft);
    }
}

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

struct PopoverControllerTest : ::testing::Test {
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
        double natural, visible;
        int height;
    };
    for (const auto& [natural, visible, height] :
         {Case{900, 1000, 800}, Case{500.2, 1000, 501}, Case{0, 1000, 800}, Case{900, 693, 554}}) {
        controller.contentHeightChanged(); // while it is not shown
        host.natural = natural;
        host.visible = visible;
        controller.open({1200, 10});
        EXPECT_EQ(host.sizes.back(), QSize(420, height)) << natural << " of " << visible;
        host.natural = 410.5;
        controller.contentHeightChanged();
        EXPECT_EQ(host.sizes.back(), QSize(420, 411));
        controller.close();
    }
    EXPECT_EQ(host.sizes.size(), 8U);
}

} // namespace
} // namespace tokwatch

#include "Tests/Support/ManualScheduler.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tokwatch/Desktop/PopoverController.h"
#include "Tokwatch/Desktop/QmlWindow.h"

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

/// A popover that notes what is asked of it.
struct FakeSurface final : PopoverSurface {
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
    PopoverControllerTest() { surface.controller = &controller; }
    void click() { controller.toggle({1200, 10}); }

    FakeSurface surface;
    Date now = dateFromUnixSeconds(1'768'000'000);
    int openings = 0;
    PopoverController controller{surface, [this] { return now; }, [this] { ++openings; }};
};

TEST_F(PopoverControllerTest, OpensAndClosesByClicksButNotByTheOneThatClosedIt) {
    click();
    EXPECT_TRUE(surface.shown);
    EXPECT_EQ(openings, 1);
    click();
    EXPECT_FALSE(surface.shown);

    now += PopoverController::reopenGuard;
    click();
    EXPECT_FALSE(surface.shown) << "the guard has not passed yet";
    now += Seconds{0.01};
    click();
    EXPECT_TRUE(surface.shown);

    surface.close(); // by a press outside
    click();
    EXPECT_FALSE(surface.shown);
    now -= Seconds{3600};
    click();
    EXPECT_TRUE(surface.shown) << "a clock that was set back keeps it shut";
    controller.close();
    controller.open({1200, 10});
    EXPECT_TRUE(surface.shown) << "who asks for it gets it at once";
}

TEST_F(PopoverControllerTest, IsAsHighAsItsContentUpToFourFifthsOfTheScreen) {
    struct Case {
        double natural, visible;
        int height;
    };
    for (const auto& [natural, visible, height] :
         {Case{900, 1000, 800}, Case{500.2, 1000, 501}, Case{0, 1000, 800}, Case{900, 693, 554}}) {
        controller.contentHeightChanged(); // while it is not shown
        surface.natural = natural;
        surface.visible = visible;
        controller.open({1200, 10});
        EXPECT_EQ(surface.sizes.back(), QSize(420, height)) << natural << " of " << visible;
        surface.natural = 410.5;
        controller.contentHeightChanged();
        EXPECT_EQ(surface.sizes.back(), QSize(420, 411));
        controller.close();
    }
    EXPECT_EQ(surface.sizes.size(), 8U);
}

} // namespace
} // namespace tokwatch

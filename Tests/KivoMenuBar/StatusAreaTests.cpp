#include "KivoMenuBar/DBusMenu.h"
#include "KivoMenuBar/ScrollStepper.h"
#include "KivoMenuBar/StatusAreaHost.h"
#include "KivoMenuBar/StatusNotifierItem.h"
#include "Tests/BusSupport/FakeStatusArea.h"
#include "Tests/BusSupport/PrivateBus.h"
#include "Tests/Support/EventLoop.h"

#include <QDBusAbstractAdaptor>

#include <gmock/gmock.h>

#include <climits>
#include <memory>
#include <string>
#include <vector>

namespace kivo {
namespace {

using namespace tokwatch::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct OnABus : ::testing::Test {
    OnABus() { registerStatusItemTypes(); }

    PrivateBus bus = (needEventLoop(), PrivateBus());
    QDBusConnection ownBus = bus.connect("own");
    QDBusConnection areaBus = bus.connect("area");
    FakeStatusArea area{areaBus};
};

struct HostsOnABus : OnABus {
    QString process = "waybar";
    QString next; ///< where hosts take turns
    StatusAreaHost host{ownBus, nullptr, [this](uint) {
                            if (!next.isEmpty()) std::swap(process, next);
                            return process;
                        }};

    bool becomes(StatusAreaKind kind) {
        return until([this, kind] { return host.area().kind == kind; });
    }
};

TEST_F(HostsOnABus, ComeAndGo) {
    int changes = 0;
    QObject::connect(&host, &StatusAreaHost::changed, [&] { ++changes; });
    EXPECT_EQ(host.area(), StatusArea{});
    for (const auto& [name, kind] : {std::pair{"waybar", StatusAreaKind::wide},
                                     {"ayatana-indicat", StatusAreaKind::label},
                                     {"unheard-of", StatusAreaKind::square}}) {
        process = name;
        changes = 0;
        area.appear();
        ASSERT_TRUE(becomes(kind)) << name;
        EXPECT_NE(host.process(), 0U);
        area.vanish();
        ASSERT_TRUE(becomes(StatusAreaKind::none)) << name;
        EXPECT_EQ(changes, 2) << name;
    }
    area.appear();
    ASSERT_TRUE(becomes(StatusAreaKind::square));
    bus.close();
    EXPECT_TRUE(becomes(StatusAreaKind::none)) << "gone with the bus";
}

TEST_F(HostsOnABus, AreMissingWhereOnlyAWatcherRuns) {
    area.hasHost = false;
    area.appear();
    drain(ownBus);
    EXPECT_EQ(host.area().kind, StatusAreaKind::none);
    area.hasHost = true;
    area.addHost("2"); // the watcher says so
    EXPECT_TRUE(becomes(StatusAreaKind::wide));
}

TEST_F(HostsOnABus, CountAsSquareWhereTheyDisagree) {
    area.appear();
    ASSERT_TRUE(becomes(StatusAreaKind::wide));
    next = "ayatana-indicat";
    area.addHost("2");
    ASSERT_TRUE(becomes(StatusAreaKind::square));
    EXPECT_EQ(host.process(), 0U);
    area.removeHost("2");
    EXPECT_TRUE(until([this] { return host.area().kind != StatusAreaKind::square; }));
}

struct StatusItemOnABus : OnABus {
    std::unique_ptr<StatusNotifierItem> item = std::make_unique<StatusNotifierItem>(
        ownBus, "Id", "Title", nullptr, std::chrono::milliseconds{1});
};

TEST_F(StatusItemOnABus, IsOfferedToEachStatusAreaThatComesAndGoneWithItsObject) {
    drain(ownBus);
    EXPECT_FALSE(item->isRegistered());
    for (int round = 0; round < 2; ++round) {
        area.appear();
        ASSERT_TRUE(until([&] { return item->isRegistered(); }));
        EXPECT_THAT(area.registered, ElementsAre(item->serviceName()));
        area.vanish();
        ASSERT_TRUE(until([&] { return !item->isRegistered(); }));
    }
    area.registered = {item->serviceName()};
    item.reset();
    EXPECT_EQ(area.call("Activate", {1, 2}).type(), QDBusMessage::ErrorMessage);
}

TEST_F(StatusItemOnABus, AsksAWatcherThatIsNotReadyAgainFiveTimes) {
    area.refusals = 3;
    area.appear();
    ASSERT_TRUE(until([&] { return item->isRegistered(); }));
    EXPECT_EQ(area.calls, 4);
    area.vanish();
    area.calls = 0;
    area.refusals = 100;
    area.appear();
    ASSERT_TRUE(until([&] { return area.calls == 6; }));
    for (int turn = 0; turn < 20; ++turn)
        drain(ownBus); // time for a seventh
    EXPECT_EQ(area.calls, 6);
    EXPECT_FALSE(item->isRegistered());
}

TEST_F(StatusItemOnABus, ShowsWhatItWasGiven) {
    area.appear();
    ASSERT_TRUE(until([&] { return item->isRegistered(); }));
    QImage picture(2, 1, QImage::Format_ARGB32_Premultiplied);
    picture.setPixel(0, 0, qRgba(1, 2, 3, 255));
    picture.setPixel(1, 0, qPremultiply(qRgba(255, 0, 0, 51)));
    item->setIcon({{picture}, "gauge", "/icons", "Claude"});
    item->setToolTip("A & B", "Weekly <8%> left");
    EXPECT_EQ(area.shown("Id").toString() + area.shown("Status").toString(), "IdActive");
    EXPECT_EQ(area.shown("IconThemePath"), "/icons");
    EXPECT_EQ(area.shown("Menu").value<QDBusObjectPath>().path(), "/MenuBar");
    const auto toolTip = qdbus_cast<StatusToolTip>(area.shown("ToolTip"));
    EXPECT_EQ(toolTip.title + ": " + toolTip.text, "A &amp; B: Weekly &lt;8%&gt; left");
    const auto pixmaps = qdbus_cast<IconPixmaps>(area.shown("IconPixmap"));
    ASSERT_EQ(pixmaps.size(), 1);
    EXPECT_EQ(QSize(pixmaps[0].width, pixmaps[0].height), QSize(2, 1));
    EXPECT_EQ(pixmaps[0].pixels.toHex(), "ff01020333ff0000") << "not premultiplied";
}

TEST_F(StatusItemOnABus, AsksForOneMenuATurnWhereItWasWantedLast) {
    std::vector<int> places;
    QObject::connect(item.get(), &StatusNotifierItem::contextMenuRequested,
                     [&](QPoint place) { places.push_back(place.x()); });
    QObject* exported = ownBus.objectRegisteredAt(StatusNotifierItem::objectPath);
    for (const int turn : {10, 20}) {
        for (const int x : {1, 2})
            QMetaObject::invokeMethod(exported->findChild<QDBusAbstractAdaptor*>(), "ContextMenu",
                                      Q_ARG(int, turn + x), Q_ARG(int, 0));
        settle();
    }
    EXPECT_THAT(places, ElementsAre(12, 22));
}

constexpr auto menuInterface = "com.canonical.dbusmenu";

struct MenuOnABus : OnABus {
    bool canUpdate = false;
    std::vector<std::string> ran;
    DBusMenu menu{ownBus, "/MenuBar", [this] { return build(); }};

    std::vector<MenuEntry> build() {
        std::vector<MenuEntry> entries{
            {"Refresh_all", QKeySequence("Ctrl+Shift+R"), [this] { ran.push_back("refresh"); }},
            {"Settings…", QKeySequence("Ctrl+,"), {}},
        };
        if (canUpdate) entries.push_back({"Update", {}, [this] { ran.push_back("update"); }});
        entries.push_back(MenuEntry::separator());
        entries.push_back({"Quit", {}, [this] { ran.push_back("quit"); }});
        return entries;
    }
    QVariantList call(const QString& member, const QVariantList& arguments) {
        return answer(areaBus, ownBus.baseService(), "/MenuBar", menuInterface, member, arguments)
            .arguments();
    }
    MenuLayoutItem layout(int parent = 0, int depth = -1, const QStringList& names = {}) {
        return qdbus_cast<MenuLayoutItem>(call("GetLayout", {parent, depth, names}).value(1));
    }
    std::vector<std::string> labels() {
        std::vector<std::string> result;
        for (const MenuLayoutItem& child : layout().children)
            result.push_back(std::to_string(child.id) + " " +
                             child.properties.value("label", "-").toString().toStdString());
        return result;
    }
    void click(int id, const char* type = "clicked") {
        call("Event", {id, type, QVariant::fromValue(QDBusVariant(0)), 0U});
    }
};

TEST_F(MenuOnABus, IsLaidOutAsTheHostAsks) {
    EXPECT_THAT(labels(), ElementsAre("1 Refresh__all", "2 Settings…", "3 -", "4 Quit"));
    const MenuLayoutItem root = layout();
    EXPECT_EQ(root.properties.value("children-display"), "submenu");
    EXPECT_EQ(root.children[2].properties.value("type"), "separator");
    EXPECT_EQ(qdbus_cast<QList<QStringList>>(root.children[0].properties.value("shortcut")),
              (QList<QStringList>{{"Control", "Shift", "r"}}));
    EXPECT_TRUE(layout(0, 0).children.isEmpty());
    EXPECT_EQ(layout(4, -1, {"enabled"}).properties, QVariantMap({{"enabled", true}}));
    for (const auto& [ids, count] :
         {std::pair{QList<int>{4, 99, 4}, 1}, {{}, 5}}) { // none mean all
        const QVariantList group =
            call("GetGroupProperties", {QVariant::fromValue(ids), QStringList()});
        EXPECT_EQ(qdbus_cast<QList<MenuItemProperties>>(group.value(0)).size(), count);
    }
}

TEST_F(MenuOnABus, RunsEntriesFromTheLoopAfterItsReply) {
    // The reply is sent before the entry runs, which may end the program.
    click(4, "hovered");
    click(4);
    click(2);
    settle();
    EXPECT_THAT(ran, ElementsAre("quit"));
    const auto event = [](int id, const QString& type) {
        return MenuEvent{id, type, QDBusVariant(0), 0};
    };
    const QList<MenuEvent> events{event(1, "clicked"), event(99, "clicked"), event(4, "closed"),
                                  event(1, "clicked"), event(99, "clicked")};
    const QVariantList unknown = call("EventGroup", {QVariant::fromValue(events)});
    settle();
    EXPECT_EQ(qdbus_cast<QList<int>>(unknown.value(0)), QList<int>{99}) << "each once";
    EXPECT_THAT(ran, ElementsAre("quit", "refresh")) << "each once";
    click(1);
    settle();
    EXPECT_EQ(ran.size(), 3U) << "and again";
}

TEST_F(MenuOnABus, IsBuiltAnewBeforeItShowsAndNeverGivesANumberToAnotherEntry) {
    SignalLog log(areaBus, menuInterface);
    EXPECT_EQ(call("AboutToShow", {0}).value(0), false);
    EXPECT_THAT(log.take(ownBus), IsEmpty());
    canUpdate = true;
    EXPECT_EQ(call("AboutToShow", {0}).value(0), true);
    EXPECT_THAT(log.take(ownBus), ElementsAre("LayoutUpdated"));
    EXPECT_THAT(labels(),
                ElementsAre("1 Refresh__all", "2 Settings…", "5 Update", "3 -", "4 Quit"));

    canUpdate = false;
    int showings = 0;
    QObject::connect(&menu, &DBusMenu::aboutToShow, [&] { ++showings; });
    const QVariantList group =
        call("AboutToShowGroup", {QVariant::fromValue(QList<int>{0, 1, 77, 0, 77})});
    EXPECT_EQ(showings, 1);
    EXPECT_EQ(qdbus_cast<QList<int>>(group.value(0)), QList<int>{0});
    EXPECT_EQ(qdbus_cast<QList<int>>(group.value(1)), QList<int>{77});
    click(5); // the host still showed "Update"
    click(4);
    settle();
    EXPECT_THAT(ran, ElementsAre("quit"));
    canUpdate = true;
    menu.rebuild();
    EXPECT_THAT(labels(),
                ElementsAre("1 Refresh__all", "2 Settings…", "6 Update", "3 -", "4 Quit"));
}

struct Motion {
    double at; ///< seconds
    int delta;
    int steps;
};

TEST(ScrollStepper, TurnsMotionIntoSteps) {
    struct Case {
        const char* what;
        std::vector<Motion> motions;
        int notch = -120;
    };
    for (const Case& c : {
             Case{"hosts that count notches", {{1, 1, 1}, {1.1, -1, -1}, {1.2, 2, 2}}, 1},
             {"hosts that count twice", {{1, 2, 1}, {1.1, 2, 1}, {1.2, -2, -1}}, 2},
             {"unknown hosts", {{1, -120, 1}, {9, 1, 1}, {9.1, 120, -1}}, 0},
             {"fine wheels add up", {{1, -50, 0}, {1.1, -50, 0}, {1.2, -50, 1}, {1.3, -100, 1}}},
             {"a pause forgets", {{1, -100, 0}, {1.31, -100, 0}, {1.4, -20, 1}}},
             {"a turn forgets", {{1, -110, 0}, {1.1, 60, 0}, {1.2, 60, -1}, {1.3, -110, 0}}},
             {"several notches at once", {{1, -360, 3}, {1.1, 240, -2}, {1.2, 0, 0}}},
             {"anything at all", {{1, INT_MIN, -1000}, {1.1, INT_MAX, 1000}}, 1},
         }) {
        ScrollStepper stepper;
        for (const Motion& motion : c.motions)
            EXPECT_EQ(stepper.steps(motion.delta, c.notch, ScrollStepper::Seconds(motion.at)),
                      motion.steps)
                << c.what << " at " << motion.at;
    }
}

} // namespace
} // namespace kivo

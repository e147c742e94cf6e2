#include "KivoMenuBar/DBusMenu.h"

#include "Tests/BusSupport/PrivateBus.h"
#include "Tests/BusSupport/SignalLog.h"
#include "Tests/Support/EventLoop.h"

#include <QDBusConnectionInterface>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace kivo {
namespace {

using namespace tokwatch::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto menuInterface = "com.canonical.dbusmenu";

struct MenuOnABus : ::testing::Test {
    PrivateBus bus = (needEventLoop(), PrivateBus());
    QDBusConnection menuBus = bus.connect("menu");
    QDBusConnection hostBus = bus.connect("host");
    bool canUpdate = false;
    std::vector<std::string> ran;
    DBusMenu menu{menuBus, "/MenuBar", [this] { return build(); }};

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
        return answer(hostBus, menuBus.baseService(), "/MenuBar", menuInterface, member, arguments)
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
    static MenuEvent event(int id, const QString& type) { return {id, type, QDBusVariant(0), 0}; }
};

TEST_F(MenuOnABus, IsLaidOutAsTheHostAsks) {
    EXPECT_THAT(labels(), ElementsAre("1 Refresh__all", "2 Settings…", "3 -", "4 Quit"));
    const MenuLayoutItem root = layout();
    EXPECT_EQ(root.properties.value("children-display"), "submenu");
    EXPECT_EQ(root.children[2].properties.value("type"), "separator");
    using Keys = QList<QStringList>;
    EXPECT_EQ(qdbus_cast<Keys>(root.children[0].properties.value("shortcut")),
              Keys({{"Control", "Shift", "r"}}));
    EXPECT_EQ(qdbus_cast<Keys>(root.children[1].properties.value("shortcut")),
              Keys({{"Control", "comma"}}));

    EXPECT_TRUE(layout(0, 0).children.isEmpty());
    EXPECT_EQ(layout(4).properties.value("label"), "Quit");
    EXPECT_EQ(layout(4, -1, {"enabled"}).properties, QVariantMap({{"enabled", true}}));
    EXPECT_EQ(layout(99).properties, QVariantMap());
}

TEST_F(MenuOnABus, GivesPropertiesOfGroups) {
    const auto group = [&](const QList<int>& ids, const QStringList& names) {
        const QVariantList reply =
            call("GetGroupProperties", {QVariant::fromValue(ids), QVariant::fromValue(names)});
        std::vector<int> found;
        for (const auto& item : qdbus_cast<QList<MenuItemProperties>>(reply.value(0)))
            found.push_back(item.id);
        return found;
    };
    EXPECT_THAT(group({4, 99, 1}, {"label"}), ElementsAre(4, 1));
    EXPECT_THAT(group({}, {}), ElementsAre(0, 1, 2, 3, 4)) << "no ids mean all";
    EXPECT_EQ(call("GetProperty", {4, "label"}).value(0).value<QDBusVariant>().variant(), "Quit");
}

TEST_F(MenuOnABus, RunsEntriesFromTheLoopAfterItsReply) {
    // The reply is sent before the entry runs, which may end the program.
    call("Event", {4, "hovered", QVariant::fromValue(QDBusVariant(0)), 0U});
    call("Event", {4, "clicked", QVariant::fromValue(QDBusVariant(0)), 0U});
    call("Event", {2, "clicked", QVariant::fromValue(QDBusVariant(0)), 0U});
    settle();
    EXPECT_THAT(ran, ElementsAre("quit"));

    const QList<MenuEvent> events{event(1, "clicked"), event(99, "clicked"), event(4, "closed")};
    const QVariantList unknown = call("EventGroup", {QVariant::fromValue(events)});
    settle();
    EXPECT_EQ(qdbus_cast<QList<int>>(unknown.value(0)), QList<int>{99});
    EXPECT_THAT(ran, ElementsAre("quit", "refresh"));
}

TEST_F(MenuOnABus, IsBuiltAnewBeforeItShows) {
    SignalLog log(hostBus, menuInterface);
    EXPECT_EQ(call("AboutToShow", {0}).value(0), false);
    EXPECT_THAT(log.take(menuBus), IsEmpty());

    canUpdate = true;
    EXPECT_EQ(call("AboutToShow", {0}).value(0), true);
    EXPECT_THAT(log.take(menuBus), ElementsAre("LayoutUpdated"));
    EXPECT_THAT(labels(),
                ElementsAre("1 Refresh__all", "2 Settings…", "5 Update", "3 -", "4 Quit"));

    canUpdate = false;
    const QVariantList group =
        call("AboutToShowGroup", {QVariant::fromValue(QList<int>{0, 1, 77})});
    EXPECT_EQ(qdbus_cast<QList<int>>(group.value(0)), QList<int>{0});
    EXPECT_EQ(qdbus_cast<QList<int>>(group.value(1)), QList<int>{77});
}

TEST_F(MenuOnABus, NeverGivesTheNumberOfAnEntryToAnother) {
    canUpdate = true;
    menu.rebuild();
    canUpdate = false;
    menu.rebuild();
    const QVariant data = QVariant::fromValue(QDBusVariant(0));
    call("Event", {5, "clicked", data, 0U}); // the host still showed "Update"
    call("Event", {4, "clicked", data, 0U});
    settle();
    EXPECT_THAT(ran, ElementsAre("quit"));
    canUpdate = true;
    menu.rebuild();
    EXPECT_THAT(labels(),
                ElementsAre("1 Refresh__all", "2 Settings…", "6 Update", "3 -", "4 Quit"));
}

} // namespace
} // namespace kivo

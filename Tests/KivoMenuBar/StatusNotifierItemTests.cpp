#include "KivoMenuBar/StatusNotifierItem.h"

#include "Tests/BusSupport/FakeStatusArea.h"
#include "Tests/BusSupport/PrivateBus.h"
#include "Tests/BusSupport/SignalLog.h"
#include "Tests/Support/EventLoop.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace kivo {
namespace {

using namespace tokwatch::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto itemInterface = "org.kde.StatusNotifierItem";

struct StatusItemOnABus : ::testing::Test {
    StatusItemOnABus() { registerStatusItemTypes(); }

    PrivateBus bus = (needEventLoop(), PrivateBus());
    QDBusConnection itemBus = bus.connect("item");
    QDBusConnection hostBus = bus.connect("host");
    FakeStatusArea area{hostBus};

    std::unique_ptr<StatusNotifierItem> makeItem() {
        return std::make_unique<StatusNotifierItem>(itemBus, "Id", "Title", nullptr,
                                                    std::chrono::milliseconds{1});
    }
    QVariant property(const StatusNotifierItem& item, const QString& name) {
        const QDBusMessage reply =
            answer(hostBus, item.serviceName(), "/StatusNotifierItem",
                   "org.freedesktop.DBus.Properties", "Get", {QString(itemInterface), name});
        return reply.arguments().value(0).value<QDBusVariant>().variant();
    }
    void call(const StatusNotifierItem& item, const QString& member,
              const QVariantList& arguments) {
        answer(hostBus, item.serviceName(), "/StatusNotifierItem", itemInterface, member,
               arguments);
    }
};

TEST_F(StatusItemOnABus, IsOfferedToEachStatusAreaThatComes) {
    const auto item = makeItem();
    drain(itemBus);
    EXPECT_FALSE(item->isRegistered());
    for (int round = 0; round < 2; ++round) {
        area.appear();
        ASSERT_TRUE(until([&] { return item->isRegistered(); }));
        EXPECT_THAT(area.registered, ElementsAre(item->serviceName()));
        area.vanish();
        ASSERT_TRUE(until([&] { return !item->isRegistered(); }));
    }
}

TEST_F(StatusItemOnABus, AsksAWatcherThatIsNotReadyAgainFiveTimes) {
    area.appear();
    area.refusals = 3;
    const auto item = makeItem();
    ASSERT_TRUE(until([&] { return item->isRegistered(); }));
    EXPECT_EQ(area.calls, 4);

    area.vanish();
    area.calls = 0;
    area.refusals = 100;
    area.appear();
    ASSERT_TRUE(until([&] { return area.calls == 6; }));
    for (int turn = 0; turn < 20; ++turn)
        drain(itemBus); // time for a seventh
    EXPECT_EQ(area.calls, 6);
    EXPECT_FALSE(item->isRegistered());
}

TEST_F(StatusItemOnABus, IsGoneWithItsObject) {
    const QString name = makeItem()->serviceName();
    EXPECT_EQ(
        answer(hostBus, name, "/StatusNotifierItem", itemInterface, "Activate", {1, 2}).type(),
        QDBusMessage::ErrorMessage);
}

TEST_F(StatusItemOnABus, SignalsOnlyWhatChanged) {
    const auto item = makeItem();
    SignalLog log(hostBus, itemInterface);
    QImage picture(2, 2, QImage::Format_ARGB32);
    picture.fill(Qt::red);
    EXPECT_THAT(log.take(itemBus), IsEmpty());

    item->setIcon({{picture}, {}, {}, "Claude"});
    EXPECT_THAT(log.take(itemBus), ElementsAre("NewIcon"));
    item->setIcon({{picture.copy()}, {}, {}, "Claude"});
    EXPECT_THAT(log.take(itemBus), IsEmpty());
    item->setIcon({{}, "gauge", "/icons", "Claude"});
    EXPECT_THAT(log.take(itemBus), ElementsAre("NewIconThemePath", "NewIcon"));
    item->setLabel("42%", "88%");
    item->setLabel("42%", "88%");
    EXPECT_THAT(log.take(itemBus), ElementsAre("XAyatanaNewLabel"));
    item->setToolTip("Title", "<text>");
    item->setToolTip("Title", "<text>");
    EXPECT_THAT(log.take(itemBus), ElementsAre("NewToolTip"));
}

TEST_F(StatusItemOnABus, ShowsWhatItWasGiven) {
    const auto item = makeItem();
    QImage picture(2, 1, QImage::Format_ARGB32);
    picture.setPixelColor(0, 0, QColor(1, 2, 3, 255));
    picture.setPixelColor(1, 0, QColor(200, 100, 50, 128));
    item->setIcon({{picture}, "gauge", "/icons", "Claude"});
    item->setLabel("42%", "88%");
    item->setToolTip("A & B", "Weekly <8%> left");

    EXPECT_EQ(property(*item, "Id"), "Id");
    EXPECT_EQ(property(*item, "Title"), "Title");
    EXPECT_EQ(property(*item, "Status"), "Active");
    EXPECT_EQ(property(*item, "IconName"), "gauge");
    EXPECT_EQ(property(*item, "IconThemePath"), "/icons");
    EXPECT_EQ(property(*item, "IconAccessibleDesc"), "Claude");
    EXPECT_EQ(property(*item, "XAyatanaLabel"), "42%");
    EXPECT_EQ(property(*item, "XAyatanaLabelGuide"), "88%");
    EXPECT_EQ(property(*item, "ItemIsMenu"), false);
    EXPECT_EQ(property(*item, "Menu").value<QDBusObjectPath>().path(), "/MenuBar");
    const auto toolTip = qdbus_cast<StatusToolTip>(property(*item, "ToolTip"));
    EXPECT_EQ(toolTip.title, "A &amp; B");
    EXPECT_EQ(toolTip.text, "Weekly &lt;8%&gt; left");

    const auto pixmaps = qdbus_cast<IconPixmaps>(property(*item, "IconPixmap"));
    ASSERT_EQ(pixmaps.size(), 1);
    EXPECT_EQ(pixmaps[0].width, 2);
    EXPECT_EQ(pixmaps[0].height, 1);
    EXPECT_EQ(pixmaps[0].pixels.toHex(), "ff010203"
                                         "80c86432");
}

TEST(IconPixmap, IsNotPremultipliedAndHasNoPadding) {
    QImage picture(1, 2, QImage::Format_ARGB32_Premultiplied);
    picture.setPixel(0, 0, qPremultiply(qRgba(255, 0, 0, 51)));
    picture.setPixel(0, 1, 0);
    EXPECT_EQ(IconPixmap::from(picture).pixels.toHex(), "33ff0000"
                                                        "00000000");
    EXPECT_TRUE(IconPixmap::from(QImage()).pixels.isEmpty());
}

TEST_F(StatusItemOnABus, PassesOnWhatTheHostTells) {
    const auto item = makeItem();
    std::vector<std::string> heard;
    const auto at = [&](const char* what) {
        return [&heard, what](QPoint point) {
            heard.push_back(what + (" " + std::to_string(point.x())) + "," +
                            std::to_string(point.y()));
        };
    };
    QObject::connect(item.get(), &StatusNotifierItem::activated, at("left"));
    QObject::connect(item.get(), &StatusNotifierItem::secondaryActivated, at("middle"));
    QObject::connect(item.get(), &StatusNotifierItem::contextMenuRequested, at("menu"));
    QObject::connect(
        item.get(), &StatusNotifierItem::scrolled, [&](int delta, Qt::Orientation orientation) {
            heard.push_back((orientation == Qt::Vertical ? "v" : "h") + std::to_string(delta));
        });
    call(*item, "Activate", {3, 4});
    call(*item, "SecondaryActivate", {5, 6});
    call(*item, "XAyatanaSecondaryActivate", {7U});
    call(*item, "ContextMenu", {8, 9});
    call(*item, "Scroll", {120, "vertical"});
    call(*item, "Scroll", {-1, "Horizontal"});
    EXPECT_THAT(heard,
                ElementsAre("left 3,4", "middle 5,6", "middle 0,0", "menu 8,9", "v120", "h-1"));
}

} // namespace
} // namespace kivo

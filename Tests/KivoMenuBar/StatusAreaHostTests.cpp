#include "KivoMenuBar/StatusAreaHost.h"

#include "Tests/BusSupport/FakeStatusArea.h"
#include "Tests/BusSupport/PrivateBus.h"
#include "Tests/Support/EventLoop.h"

#include <gmock/gmock.h>

namespace kivo {
namespace {

using namespace tokwatch::testing;

struct HostsOnABus : ::testing::Test {
    PrivateBus bus = (needEventLoop(), PrivateBus());
    QDBusConnection ownBus = bus.connect("own");
    FakeStatusArea area{bus.connect("area")};
    QString process = "waybar";
    int changes = 0;

    std::unique_ptr<StatusAreaHost> follow() {
        auto host =
            std::make_unique<StatusAreaHost>(ownBus, nullptr, [this](uint) { return process; });
        QObject::connect(host.get(), &StatusAreaHost::changed, [this] { ++changes; });
        return host;
    }
};

TEST_F(HostsOnABus, ComeAndGo) {
    const auto host = follow();
    EXPECT_EQ(host->area().kind, StatusAreaKind::none);
    for (const auto& [name, kind] : {std::pair{"waybar", StatusAreaKind::wide},
                                     {"ayatana-indicat", StatusAreaKind::label},
                                     {"unheard-of", StatusAreaKind::square}}) {
        process = name;
        changes = 0;
        area.appear();
        ASSERT_TRUE(until([&] { return host->area().kind == kind; })) << name;
        EXPECT_NE(host->process(), 0U);
        area.vanish();
        ASSERT_TRUE(until([&] { return host->area().kind == StatusAreaKind::none; })) << name;
        EXPECT_EQ(changes, 2) << name;
    }
}

TEST_F(HostsOnABus, AreMissingWhereOnlyAWatcherRuns) {
    area.hasHost = false;
    area.appear();
    const auto host = follow();
    drain(ownBus);
    EXPECT_EQ(host->area().kind, StatusAreaKind::none);
    area.hasHost = true;
    area.addHost("2"); // the watcher says so
    EXPECT_TRUE(until([&] { return host->area().kind == StatusAreaKind::wide; }));
}

TEST_F(HostsOnABus, CountAsSquareWhereTheyDisagree) {
    area.appear();
    StatusAreaHost host(ownBus, nullptr, [this](uint) {
        process = process == "waybar" ? "ayatana-indicat" : "waybar";
        return process;
    });
    ASSERT_TRUE(until([&] { return host.area().kind != StatusAreaKind::none; }));
    area.addHost("2");
    ASSERT_TRUE(until([&] { return host.area().kind == StatusAreaKind::square; }));
    EXPECT_EQ(host.process(), 0U);
    area.removeHost("2");
    EXPECT_TRUE(until([&] { return host.area().kind != StatusAreaKind::square; }));
}

TEST_F(HostsOnABus, AreGoneWithTheBus) {
    area.appear();
    const auto host = follow();
    ASSERT_TRUE(until([&] { return host->area().kind == StatusAreaKind::wide; }));
    bus.close();
    EXPECT_TRUE(until([&] { return host->area().kind == StatusAreaKind::none; }));
}

TEST(StatusAreaHost, FindsNoneWithoutABus) {
    needEventLoop();
    const StatusAreaHost host(QDBusConnection::connectToBus("unix:path=/none", "none"));
    EXPECT_EQ(host.area(), StatusArea{});
    EXPECT_EQ(StatusAreaHost::systemProcessName(0), "");
}

} // namespace
} // namespace kivo

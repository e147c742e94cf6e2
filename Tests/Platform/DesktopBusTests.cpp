#include "Platform/Linux/DesktopBus.h"

#include "Platform/Linux/MuteBuses.h"
#include "Platform/Linux/TerminationSignals.h"
#include "Tests/BusSupport/PrivateBus.h"
#include "Tests/Support/CapturedLog.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QLocalServer>

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

namespace tokwatch {
namespace {

TEST(DesktopBus, HearsOfTheEndOfSleepAndOfTheNetwork) {
    testing::needEventLoop();
    testing::PrivateBus bus;
    DesktopBus desktop(bus.connect("session"), bus.connect("system"));
    int resumes = 0;
    int returns = 0;
    desktop.onResume([&] { ++resumes; });
    desktop.onNetworkBack([&] { ++returns; });

    QDBusConnection other = bus.connect("other");
    const auto say = [&](const QString& name, const QString& path, const QString& interface,
                         const QString& member, const QVariantList& arguments) {
        other.registerService(name);
        QDBusMessage signal = QDBusMessage::createSignal(path, interface, member);
        signal.setArguments(arguments);
        other.send(signal);
    };
    const QString login = "org.freedesktop.login1";
    const QString manager = "org.freedesktop.NetworkManager";
    const QString networkd = "org.freedesktop.network1";
    for (const bool begins : {true, true, false})
        say(login, "/org/freedesktop/login1", login + ".Manager", "PrepareForSleep", {begins});
    for (const uint state : {20u, 40u, 60u, 70u})
        say(manager, "/org/freedesktop/NetworkManager", manager, "StateChanged", {state});
    for (const char* state : {"degraded", "routable"})
        say(networkd, "/org/freedesktop/network1", "org.freedesktop.DBus.Properties",
            "PropertiesChanged",
            {networkd + ".Manager", QVariantMap{{"OperationalState", state}}, QStringList()});
    for (int turn = 0; turn < 1'000'000 && (returns < 2 || resumes < 1); ++turn)
        testing::settle();
    EXPECT_EQ(resumes, 1);
    EXPECT_EQ(returns, 2);
}

TEST(DesktopBus, LeavesItsPlaceToWhoeverStartsWhileItEnds) {
    testing::needEventLoop();
    testing::PrivateBus bus;
    DesktopBus ending(bus.connect("ending"), bus.connect("system"));
    DesktopBus next(bus.connect("next"), bus.connect("system"));
    EXPECT_EQ(ending.claim([] { FAIL() << "nobody would see it"; }), DesktopBus::Claim::first);
    EXPECT_EQ(next.claim([] {}), DesktopBus::Claim::second);
    {
        const TerminationSignals termination([] {});
        ::raise(SIGTERM);
        EXPECT_GT(::alarm(0), 0U) << "whatever the end waits for, it has a bound";
        const QDBusPendingCall asked = next.sessionBus().asyncCall(QDBusMessage::createMethodCall(
            DesktopBus::serviceName, DesktopBus::objectPath, DesktopBus::serviceName, "Open"));
        while (!asked.isFinished())
            testing::settle();
        EXPECT_TRUE(asked.isError()) << "it has been told to end";
    }
    ending.release();
    EXPECT_EQ(next.openRunning(), DesktopBus::Opening::claimed);
}

TEST(MuteBuses, AreLeftOutAndThoseThatAnswerAreNot) {
    for (const char* variable : {"DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS"}) {
        const QByteArray usual = qgetenv(variable);
        const testing::PrivateBus bus;
        qputenv(variable, bus.address().toUtf8());
        EXPECT_FALSE(leaveOutMuteBuses());
        EXPECT_EQ(qgetenv(variable), bus.address().toUtf8());

        testing::CapturedLog log;
        QLocalServer mute;
        mute.setSocketOptions(QLocalServer::UserAccessOption);
        const testing::TemporaryDirectory place;
        const QString path = QString::fromStdString((place / "bus").string());
        ASSERT_TRUE(mute.listen(path));
        qputenv(variable, ("unix:path=" + path).toUtf8());
        EXPECT_TRUE(leaveOutMuteBuses(std::chrono::milliseconds{0}));
        EXPECT_FALSE(QDBusConnection::connectToBus(qgetenv(variable), "left out").isConnected());
        EXPECT_EQ(log.lines().size(), 1U);
        usual.isNull() ? qunsetenv(variable) : qputenv(variable, usual);
    }
}

} // namespace
} // namespace tokwatch

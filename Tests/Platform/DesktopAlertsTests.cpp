#include "Platform/Linux/DesktopAlerts.h"

#include "Tests/BusSupport/PrivateBus.h"
#include "Tests/Support/EventLoop.h"

#include <QDBusArgument>
#include <QDBusVirtualObject>

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A notification service in this thread: a caller that waited for it would wait for ever.
class FakeService final : public QDBusVirtualObject {
  public:
    explicit FakeService(QDBusConnection connection) : bus(std::move(connection)) {
        bus.registerVirtualObject(DesktopAlerts::objectPath, this);
    }
    void appear() { bus.registerService(DesktopAlerts::serviceName); }
    void vanish() { bus.unregisterService(DesktopAlerts::serviceName); }
    void tell(const QString& signal, const QVariantList& arguments) {
        QDBusMessage message = QDBusMessage::createSignal(DesktopAlerts::objectPath,
                                                          DesktopAlerts::serviceName, signal);
        message.setArguments(arguments);
        bus.send(message);
    }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection&) override {
        const QVariantList given = call.arguments();
        if (call.member() == "CloseNotification")
            heard.push_back("close " + given[0].toString().toStdString());
        if (call.member() != "Notify") return true;
        const QVariantMap hints = qdbus_cast<QVariantMap>(given[6]);
        QStringList said;
        for (const int at : {1, 2, 3, 4}) // what it replaces, the icon, the title, the text
            said << given[at].toString();
        said << given[5].toStringList().join(',') << hints["urgency"].typeName()
             << QString::number(hints["urgency"].toUInt()) << hints["desktop-entry"].toString();
        heard.push_back(said.join(" | ").toStdString());
        unanswered.push_back(call.createReply(QVariant(++number)));
        if (!isHung) answer();
        return true;
    }
    void answer() {
        for (const QDBusMessage& reply : std::exchange(unanswered, {}))
            bus.send(reply);
    }
    QString introspect(const QString&) const override { return {}; }

    std::vector<std::string> heard;
    uint number = 40;
    bool isHung = false;

  private:
    QDBusConnection bus;
    std::vector<QDBusMessage> unanswered;
};

struct DesktopAlertsTest : ::testing::Test {
    DesktopAlertsTest() {
        testing::needEventLoop();
        alerts.onOpen = [this](const std::string& token) { opened.push_back(token); };
        alerts.onArrival = [this] { ++arrivals; };
        alerts.onShown = [this](const std::string&, const std::string& given) { handle = given; };
    }
    void settle() {
        for (int turn = 0; turn < 3; ++turn) {
            testing::drain(appBus);
            testing::drain(serviceBus);
        }
    }
    std::vector<std::string> show(const std::string& subject, const std::string& title = "T") {
        alerts.show({subject, title, "a < b", Alert::Urgency::critical});
        settle();
        return std::exchange(service.heard, {});
    }

    testing::PrivateBus bus;
    QDBusConnection appBus = bus.connect("app");
    QDBusConnection serviceBus = bus.connect("service");
    FakeService service{serviceBus};
    DesktopAlerts alerts{appBus};
    std::vector<std::string> opened;
    int arrivals = 0;
    std::string handle;
};

constexpr const char* over0 =
    "0 | app.tokwatch | T | a &lt; b | default,Open Tokwatch | uchar | 2 | app.tokwatch";
constexpr const char* over41 =
    "41 | app.tokwatch | U | a &lt; b | default,Open Tokwatch | uchar | 2 | app.tokwatch";

TEST_F(DesktopAlertsTest, ReplacesTheOneBeforeAndOpensAtAClick) {
    settle();
    EXPECT_FALSE(alerts.isThere());
    EXPECT_THAT(show("claude/session"), IsEmpty());
    service.appear();
    settle();
    EXPECT_TRUE(alerts.isThere());
    EXPECT_EQ(arrivals, 1);
    EXPECT_THAT(show("claude/session"), ElementsAre(over0));
    EXPECT_THAT(show("claude/weekly"), ElementsAre(over0)) << "another window stands beside it";
    service.number = 40; // as a service does that keeps the number of what it replaces
    EXPECT_THAT(show("claude/session", "U"), ElementsAre(over41));

    service.tell("ActionInvoked", {40u, "default"});
    service.tell("ActionInvoked", {41u, "other"});
    service.tell("ActivationToken", {41u, "token"});
    service.tell("ActionInvoked", {41u, "default"});
    service.tell("ActionInvoked", {41u, "default"});
    settle();
    EXPECT_THAT(opened, ElementsAre("token", ""));

    service.tell("NotificationClosed", {41u, 2u});
    settle();
    EXPECT_THAT(show("claude/session"), ElementsAre(over0)) << "its user took it away";
    alerts.withdraw("claude/session");
    alerts.withdraw("claude/session");
    settle();
    EXPECT_THAT(service.heard, ElementsAre("close 42"));
}

TEST_F(DesktopAlertsTest, OutlivesTheServiceAndOneThatHangs) {
    service.appear();
    settle();
    service.isHung = true;
    EXPECT_THAT(show("claude/session"), ElementsAre(over0));
    EXPECT_THAT(show("claude/weekly"), ElementsAre(over0));
    EXPECT_THAT(show("claude/session"), IsEmpty()) << "what it replaces has no number yet";
    EXPECT_THAT(show("claude/session", "U"), IsEmpty());
    alerts.withdraw("claude/weekly");
    service.isHung = false;
    service.answer();
    settle();
    EXPECT_THAT(std::exchange(service.heard, {}), ElementsAre(over41, "close 42"));
    service.vanish();
    service.appear();
    settle();
    EXPECT_THAT(show("claude/session"), ElementsAre(over0))
        << "the number may be another program's by now";
}

TEST_F(DesktopAlertsTest, GoesOnWithWhatAnEarlierProcessShowedOnThisDesktop) {
    service.appear();
    settle();
    show("claude/session");
    ASSERT_FALSE(handle.empty());
    testing::PrivateBus elsewhere;
    QDBusConnection otherApp = elsewhere.connect("other app"); // as the first of each bus, :1.0
    QDBusConnection otherBus = elsewhere.connect("other service");
    FakeService stranger{otherBus};
    stranger.appear();
    for (const bool isHere : {true, false}) {
        DesktopAlerts next{isHere ? appBus : otherApp};
        for (int turn = 0; turn < 3; ++turn)
            for (const QDBusConnection& each : {appBus, serviceBus, otherApp, otherBus})
                testing::drain(each);
        ASSERT_TRUE(next.isThere());
        next.takeOver("claude/session", handle);
        next.takeOver("claude/weekly", handle.substr(0, handle.rfind(' ') + 1) + "-1");
        next.withdraw("claude/session");
        next.withdraw("claude/weekly");
        for (const QDBusConnection& each : {appBus, serviceBus, otherApp, otherBus})
            testing::drain(each);
    }
    EXPECT_THAT(service.heard, ElementsAre("close 41"));
    EXPECT_THAT(stranger.heard, IsEmpty());
}

} // namespace
} // namespace tokwatch

#include "Platform/Linux/DesktopBus.h"

#include "Platform/Linux/TerminationSignals.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QThread>

#include <chrono>

namespace tokwatch {
namespace {

void callAll(const std::vector<std::function<void()>>& calls) {
    for (const std::function<void()>& call : calls)
        call();
}

} // namespace

DesktopBus::DesktopBus(QDBusConnection sessionBus, QDBusConnection systemBus)
    : session(std::move(sessionBus)), system(std::move(systemBus)) {
    if (!session.isConnected())
        systemLog("there is no session bus; refresh requests from other programs are not heard");
}

void DesktopBus::onRefreshRequest(std::function<void()> call) {
    // From any sender and any path: the notification belongs to nobody.
    if (refreshCalls.empty() && session.isConnected())
        session.connect({}, {}, serviceName, refreshMember, this, SLOT(refreshPosted()));
    refreshCalls.push_back(std::move(call));
}

void DesktopBus::onResume(std::function<void()> call) {
    if (resumeCalls.empty() && system.isConnected())
        system.connect("org.freedesktop.login1", "/org/freedesktop/login1",
                       "org.freedesktop.login1.Manager", "PrepareForSleep", this,
                       SLOT(preparingForSleep(bool)));
    resumeCalls.push_back(std::move(call));
}

void DesktopBus::onTimeZoneChange(std::function<void()> call) {
    if (timeZoneCalls.empty() && system.isConnected())
        system.connect("org.freedesktop.timedate1", "/org/freedesktop/timedate1",
                       "org.freedesktop.DBus.Properties", "PropertiesChanged", this,
                       SLOT(timePropertiesChanged(QString)));
    timeZoneCalls.push_back(std::move(call));
}

void DesktopBus::onNetworkBack(std::function<void()> call) {
    if (networkCalls.empty() && system.isConnected()) {
        system.connect("org.freedesktop.NetworkManager", "/org/freedesktop/NetworkManager",
                       "org.freedesktop.NetworkManager", "StateChanged", this,
                       SLOT(networkManagerChanged(uint)));
        system.connect("org.freedesktop.network1", "/org/freedesktop/network1",
                       "org.freedesktop.DBus.Properties", "PropertiesChanged", this,
                       SLOT(networkdChanged(QString, QVariantMap)));
    }
    networkCalls.push_back(std::move(call));
}

DesktopBus::Claim DesktopBus::claim(std::function<void()> open) {
    if (!session.isConnected()) return Claim::noBus;
    openCall = std::move(open);
    // The object first: who sees the name may call it at once.
    session.registerObject(objectPath, this, QDBusConnection::ExportScriptableSlots);
    return session.registerService(serviceName) ? Claim::first : Claim::second;
}

DesktopBus::Opening DesktopBus::openRunning() {
    QDBusMessage call =
        QDBusMessage::createMethodCall(serviceName, objectPath, serviceName, "Open");
    call.setAutoStartService(false); // the name may be free by now, and this one has its options
    constexpr std::chrono::milliseconds pause{50};
    const QDeadlineTimer deadline(TerminationSignals::patience);
    while (!deadline.hasExpired()) {
        const auto left = static_cast<int>(deadline.remainingTime());
        if (session.call(call, QDBus::Block, left).type() == QDBusMessage::ReplyMessage)
            return Opening::shown;
        if (session.registerService(serviceName)) return Opening::claimed;
        QThread::msleep(pause.count());
    }
    return Opening::unanswered;
}

void DesktopBus::release() {
    openCall = nullptr;
    session.unregisterObject(objectPath);
    if (!session.isConnected()) return;
    // Without waiting for a bus that may be silent.
    QDBusMessage call = QDBusMessage::createMethodCall(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReleaseName");
    call.setArguments({serviceName});
    session.send(call);
}

bool DesktopBus::postRefresh(QDBusConnection session) {
    return session.isConnected() &&
           session.send(QDBusMessage::createSignal(objectPath, serviceName, refreshMember));
}

void DesktopBus::Open() {
    // Who asked takes its place then.
    if (!openCall || TerminationSignals::arrived())
        return sendErrorReply(QDBusError::ServiceUnknown, QStringLiteral("it is ending"));
    openCall();
}

void DesktopBus::refreshPosted() {
    callAll(refreshCalls);
}

void DesktopBus::preparingForSleep(bool begins) {
    if (!begins) callAll(resumeCalls);
}

void DesktopBus::timePropertiesChanged(const QString& interface) {
    if (interface == "org.freedesktop.timedate1") callAll(timeZoneCalls);
}

void DesktopBus::networkManagerChanged(uint state) {
    constexpr uint connectedGlobally = 70; // NM_STATE_CONNECTED_GLOBAL
    if (state == connectedGlobally) callAll(networkCalls);
}

void DesktopBus::networkdChanged(const QString& /*interface*/, const QVariantMap& changed) {
    if (changed.value("OperationalState") == "routable") callAll(networkCalls);
}

} // namespace tokwatch

#include "moc_DesktopBus.cpp"

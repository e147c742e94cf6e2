#include "Tests/BusSupport/PrivateBus.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusPendingCall>
#include <QDeadlineTimer>
#include <QTemporaryFile>
#include <QTimer>

#include <utility>

namespace tokwatch::testing {

namespace {

/// As a session's, but that it starts no service of the machine's.
constexpr const char* configuration = R"(<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>)";

} // namespace

PrivateBus::PrivateBus() {
    QTemporaryFile file;
    file.open();
    file.write(configuration);
    file.flush();
    daemon.start("dbus-daemon",
                 {"--config-file=" + file.fileName(), "--nofork", "--print-address"});
    daemon.waitForReadyRead();
    busAddress = QString::fromUtf8(daemon.readLine().trimmed());
}

PrivateBus::~PrivateBus() {
    for (const QString& name : names)
        QDBusConnection::disconnectFromBus(name);
    close();
}

QDBusConnection PrivateBus::connect(const QString& name) {
    names.append(name);
    return QDBusConnection::connectToBus(busAddress, name);
}

void PrivateBus::close() {
    daemon.kill();
    daemon.waitForFinished();
}

bool until(const std::function<bool()>& condition) {
    QTimer wake; // the loop must turn though nothing happens
    wake.start(10);
    const QDeadlineTimer deadline(15'000);
    while (!condition()) {
        if (deadline.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

void drain(QDBusConnection bus) {
    answer(bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetId");
}

QDBusMessage answer(QDBusConnection bus, const QString& service, const QString& path,
                    const QString& interface, const QString& member,
                    const QVariantList& arguments) {
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, member);
    call.setArguments(arguments);
    const QDBusPendingCall pending = bus.asyncCall(call);
    until([&] { return pending.isFinished(); });
    // What came before the answer may still be queued for this thread.
    QCoreApplication::processEvents();
    return pending.reply();
}

SignalLog::SignalLog(QDBusConnection connection, const QString& interface)
    : bus(std::move(connection)) {
    bus.connect(QString(), QString(), interface, QString(), this, SLOT(heard(QDBusMessage)));
    drain(bus); // from here on the bus passes them on
}

QStringList SignalLog::take(QDBusConnection sender) {
    drain(sender);
    drain(bus);
    return std::exchange(members, {});
}

void SignalLog::heard(const QDBusMessage& signal) {
    members.append(signal.member());
}

} // namespace tokwatch::testing

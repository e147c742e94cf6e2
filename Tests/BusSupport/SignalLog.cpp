#include "Tests/BusSupport/SignalLog.h"

#include "Tests/BusSupport/PrivateBus.h"

#include <utility>

namespace tokwatch::testing {

SignalLog::SignalLog(QDBusConnection connection, const QString& interface)
    : bus(std::move(connection)) {
    bus.connect(QString(), QString(), interface, QString(), this, SLOT(heard(QDBusMessage)));
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

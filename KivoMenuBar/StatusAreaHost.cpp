#include "KivoMenuBar/StatusAreaHost.h"

#include "KivoMenuBar/StatusItemTypes.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QFile>

#include <algorithm>
#include <array>
#include <utility>

namespace kivo {
namespace {

constexpr auto localPath = "/org/freedesktop/DBus/Local";
constexpr auto localInterface = "org.freedesktop.DBus.Local";
constexpr auto hostPrefix = "org.kde.StatusNotifierHost-";

struct KnownHost {
    QLatin1String process; ///< the beginning of its name
    StatusArea area;
};

constexpr std::array knownHosts{
    KnownHost{QLatin1String("waybar"),
              {.kind = StatusAreaKind::wide, .tone = ToneSource::styleSheet, .wheelNotch = 2}},
    // The service behind the indicator plugins of the xfce and MATE panels. It hands on names of
    // icons, which the panel draws in the colour of its text.
    KnownHost{QLatin1String("ayatana-indicat"),
              {.kind = StatusAreaKind::label,
               .namesOnly = true,
               .opensMenu = true,
               .tone = ToneSource::xfce,
               .wheelNotch = 1}},
    // Its extension passes a double click on, but nobody expects to need one.
    KnownHost{QLatin1String("gnome-shell"),
              {.kind = StatusAreaKind::label, .opensMenu = true, .tone = ToneSource::habit}},
    KnownHost{QLatin1String("plasmashell"),
              {.kind = StatusAreaKind::square, .tone = ToneSource::plasma, .wheelNotch = -120}},
    // The xfce panel runs each plugin in a process that it names after it.
    KnownHost{QLatin1String("panel-"), {.kind = StatusAreaKind::square, .tone = ToneSource::xfce}},
    KnownHost{QLatin1String("xfce4-panel"),
              {.kind = StatusAreaKind::square, .tone = ToneSource::xfce}},
    KnownHost{QLatin1String("wrapper-2.0"),
              {.kind = StatusAreaKind::square, .tone = ToneSource::xfce}},
};

constexpr StatusArea unknownHost{.kind = StatusAreaKind::square};

} // namespace

StatusArea statusAreaOf(QStringView processName) {
    const auto known = std::ranges::find_if(
        knownHosts, [&](const KnownHost& host) { return processName.startsWith(host.process); });
    return known == knownHosts.end() ? unknownHost : known->area;
}

QString StatusAreaHost::systemProcessName(uint pid) {
    QFile name(QStringLiteral("/proc/%1/comm").arg(pid));
    if (!name.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(name.readAll().trimmed());
}

StatusAreaHost::StatusAreaHost(QDBusConnection connection, QObject* parent, ProcessName name)
    : QObject(parent), bus(std::move(connection)), processName(std::move(name)) {
    if (!bus.isConnected()) return;
    watched = new QDBusServiceWatcher(watcherService, bus, QDBusServiceWatcher::WatchForOwnerChange,
                                      this);
    connect(watched, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString& service) {
                // Who was asked may be gone and leave it at that.
                if (service == QLatin1String(watcherService))
                    delete std::exchange(question, nullptr);
                look();
            });
    for (const char* member : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
        bus.connect(watcherService, watcherPath, watcherService, member, this, SLOT(look()));
    bus.connect(QString(), localPath, localInterface, "Disconnected", this, SLOT(busClosed()));
    look();
}

void StatusAreaHost::busClosed() {
    assign({});
}

void StatusAreaHost::look() {
    // Whatever comes meanwhile, however often, is one more look.
    mustLookAgain = question != nullptr;
    if (mustLookAgain) return;
    if (!bus.interface()->isServiceRegistered(watcherService)) return assign({});
    // A watcher may run on its own, waiting for a host. It is not ours, so it may take its time.
    QDBusMessage ask = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                      "org.freedesktop.DBus.Properties", "Get");
    ask << QString::fromLatin1(watcherService) << QStringLiteral("IsStatusNotifierHostRegistered");
    question = new QDBusPendingCallWatcher(bus.asyncCall(ask), this);
    connect(question, &QDBusPendingCallWatcher::finished, this, [this] {
        question->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *std::exchange(question, nullptr);
        if (!bus.isConnected()) return;
        // Who does not answer the question is taken for a host.
        if (reply.isValid() && !reply.value().variant().toBool())
            assign({});
        else
            conclude();
        if (mustLookAgain) look();
    });
}

void StatusAreaHost::conclude() {
    const QStringList hosts = hostServices();
    // Hosts come and go without their watcher noticing; each one's name tells.
    watched->setWatchedServices(QStringList{watcherService} + hosts);
    const uint first = processOf(hosts.isEmpty() ? watcherService : hosts.front());
    if (first == 0) return assign({}); // it is gone already; that will be told

    const StatusArea common = statusAreaOf(processName(first));
    for (const QString& host : hosts.mid(1)) {
        const uint other = processOf(host);
        if (other != 0 && statusAreaOf(processName(other)) != common) return assign(unknownHost);
    }
    assign(common, first);
}

void StatusAreaHost::assign(const StatusArea& next, uint process) {
    if (next == current && process == currentProcess) return;
    current = next;
    currentProcess = process;
    emit changed();
}

QStringList StatusAreaHost::hostServices() const {
    // Asks the bus itself, which answers at once.
    return bus.interface()->registeredServiceNames().value().filter(QLatin1String(hostPrefix));
}

uint StatusAreaHost::processOf(const QString& service) const {
    const QDBusReply<uint> process = bus.interface()->servicePid(service);
    return process.isValid() ? process.value() : 0;
}

} // namespace kivo

#include "moc_StatusAreaHost.cpp"

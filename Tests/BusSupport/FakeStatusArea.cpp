#include "Tests/BusSupport/FakeStatusArea.h"

#include "Tests/BusSupport/PrivateBus.h"

#include <QDBusVariant>

#include <utility>

namespace tokwatch::testing {
namespace {

constexpr auto service = "org.kde.StatusNotifierWatcher";
constexpr auto path = "/StatusNotifierWatcher";
constexpr auto itemPath = "/StatusNotifierItem";
constexpr auto itemInterface = "org.kde.StatusNotifierItem";
constexpr auto hostPrefix = "org.kde.StatusNotifierHost-";

} // namespace

FakeStatusArea::FakeStatusArea(QDBusConnection connection) : bus(std::move(connection)) {
    bus.registerVirtualObject(path, this);
}

FakeStatusArea::~FakeStatusArea() {
    bus.unregisterObject(path);
}

void FakeStatusArea::appear() {
    addHost("1");
    bus.registerService(service);
}

void FakeStatusArea::vanish() {
    registered.clear();
    bus.unregisterService(service);
    removeHost("1");
}

void FakeStatusArea::addHost(const QString& suffix) {
    bus.registerService(hostPrefix + suffix);
    bus.send(QDBusMessage::createSignal(path, service, "StatusNotifierHostRegistered"));
}

void FakeStatusArea::removeHost(const QString& suffix) {
    bus.unregisterService(hostPrefix + suffix);
}

QVariant FakeStatusArea::shown(const QString& property) {
    const QDBusMessage reply =
        answer(bus, registered.value(0), itemPath, "org.freedesktop.DBus.Properties", "Get",
               {QString(itemInterface), property});
    return reply.arguments().value(0).value<QDBusVariant>().variant();
}

QDBusMessage FakeStatusArea::call(const QString& member, const QVariantList& arguments) {
    return answer(bus, registered.value(0), itemPath, itemInterface, member, arguments);
}

bool FakeStatusArea::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    if (message.member() == "RegisterStatusNotifierItem") {
        ++calls;
        if (refusals > 0) {
            --refusals;
            connection.send(message.createErrorReply(QDBusError::UnknownObject, "not ready"));
            return true;
        }
        registered.append(message.arguments().at(0).toString());
        connection.send(message.createReply());
        return true;
    }
    if (message.member() == "Get") {
        connection.send(message.createReply(QVariant::fromValue(QDBusVariant(hasHost))));
        return true;
    }
    return false;
}

} // namespace tokwatch::testing

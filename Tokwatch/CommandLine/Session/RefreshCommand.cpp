#include "Platform/Linux/DesktopBus.h"
#include "Tokwatch/CommandLine/Session/EventLoop.h"
#include "Tokwatch/CommandLine/Session/SessionCommands.h"

#include <QDBusMessage>

namespace tokwatch {
namespace {

/// Whether all that was sent has come to the bus: messages keep their order, so an answer means
/// that those before the question are there.
bool hasArrived(const QDBusConnection& bus) {
    const QDBusMessage question = QDBusMessage::createMethodCall(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.Peer", "Ping");
    constexpr int timeoutMilliseconds = 2000;
    return bus.call(question, QDBus::Block, timeoutMilliseconds).type() ==
           QDBusMessage::ReplyMessage;
}

} // namespace

int SessionCommands::run(const CommandSurroundings&, const RefreshOptions&) {
    const EventLoop loop;
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!DesktopBus::postRefresh(bus) || !hasArrived(bus))
        throw CommandError("there is no session bus to reach a running Tokwatch by");
    return exitOk;
}

} // namespace tokwatch

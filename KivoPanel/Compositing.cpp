#include "KivoPanel/Compositing.h"

#include "KivoPanel/DisplayServer.h"

#include <QByteArray>
#include <QGuiApplication>

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

namespace kivo {
namespace {

/// A selection has another owner: the first event of the extension, which the toolkit asks for of
/// the compositing manager's.
std::uint8_t selectionEventOf(xcb_connection_t* server) {
    constexpr QByteArrayView name("XFIXES");
    const std::unique_ptr<xcb_query_extension_reply_t, decltype(&std::free)> extension(
        xcb_query_extension_reply(
            server, xcb_query_extension(server, static_cast<uint16_t>(name.size()), name.data()),
            nullptr),
        &std::free);
    return extension && extension->present != 0 ? extension->first_event : 0;
}

std::uint8_t selectionEventHere() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* server = x11 == nullptr ? nullptr : x11->connection();
    return server == nullptr ? 0 : selectionEventOf(server);
}

} // namespace

Compositing::Compositing() : selectionEvent(selectionEventHere()), active(isComposited()) {
    if (selectionEvent != 0) qGuiApp->installNativeEventFilter(this);
}

bool Compositing::nativeEventFilter(const QByteArray& eventType, void* message,
                                    qintptr* /*result*/) {
    if (eventType != "xcb_generic_event_t") return false;
    constexpr unsigned sentBit = 0x80;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    // Whoever listens may make and end windows, which is nothing to do within an event.
    if ((event->response_type & ~sentBit) == selectionEvent)
        QMetaObject::invokeMethod(this, &Compositing::look, Qt::QueuedConnection);
    return false;
}

void Compositing::look() {
    const bool isNow = isComposited();
    if (isNow == active) return;
    active = isNow;
    emit changed();
}

} // namespace kivo

#include "moc_Compositing.cpp"

#include "KivoPanel/Compositing.h"

#include "KivoPanel/DisplayServer.h"
#include "KivoPanel/XServer.h"

#include <QByteArray>
#include <QGuiApplication>

#include <string_view>

namespace kivo {
namespace {

/// The event of a selection that has another owner, the first of its extension's, which the toolkit
/// asks for of the compositing manager's. None without that server or the extension.
std::uint8_t selectionEventHere() {
    xcb_connection_t* server = xServer();
    if (server == nullptr) return 0;
    constexpr std::string_view name("XFIXES");
    const auto extension = owned(xcb_query_extension_reply(
        server, xcb_query_extension(server, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return extension && extension->present != 0 ? extension->first_event : 0;
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

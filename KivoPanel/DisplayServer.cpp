#include "KivoPanel/DisplayServer.h"

#include <QByteArray>
#include <QGuiApplication>
#include <QScreen>

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

namespace kivo {
namespace {

template<typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
    return {reply, &std::free};
}

/// A compositing manager owns the selection of its screen.
bool hasCompositingManager(xcb_connection_t* server) {
    constexpr QByteArrayView name("_NET_WM_CM_S0");
    const auto atom = owned(xcb_intern_atom_reply(
        server, xcb_intern_atom(server, true, static_cast<uint16_t>(name.size()), name.data()),
        nullptr));
    if (!atom || atom->atom == XCB_ATOM_NONE) return false;
    const auto owner = owned(xcb_get_selection_owner_reply(
        server, xcb_get_selection_owner(server, atom->atom), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

xcb_connection_t* xServer() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 == nullptr ? nullptr : x11->connection();
}

} // namespace

bool isComposited() {
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) return true;
    xcb_connection_t* server = xServer();
    return server != nullptr && hasCompositingManager(server);
}

bool canGrabAll() {
    xcb_connection_t* server = xServer();
    if (server == nullptr) return false;
    // A guest says so by an extension, older ones by the names of their screens.
    constexpr QByteArrayView name("XWAYLAND");
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen != nullptr && screen->name().startsWith(QLatin1String(name))) return false;
    const auto guest = owned(xcb_query_extension_reply(
        server, xcb_query_extension(server, static_cast<uint16_t>(name.size()), name.data()),
        nullptr));
    return !guest || guest->present == 0;
}

} // namespace kivo

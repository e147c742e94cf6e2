#include "KivoPanel/DisplayServer.h"

#include "KivoPanel/XServer.h"

#include <QByteArray>
#include <QGuiApplication>
#include <QScreen>

namespace kivo {
namespace {

/// A compositing manager owns the selection of its screen.
bool hasCompositingManager(xcb_connection_t* server) {
    const xcb_atom_t manager = atomOf(server, "_NET_WM_CM_S0", true);
    if (manager == XCB_ATOM_NONE) return false;
    const auto owner = owned(
        xcb_get_selection_owner_reply(server, xcb_get_selection_owner(server, manager), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
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

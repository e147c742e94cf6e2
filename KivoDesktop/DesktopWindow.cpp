#include "KivoDesktop/DesktopWindow.h"

#include "KivoDesktop/LayerSurface.h"
#include "KivoPanel/XServer.h"

#include <QGuiApplication>
#include <QWindow>

#include <array>
#include <string_view>

namespace kivo {
namespace {

xcb_atom_t atom(xcb_connection_t* server, std::string_view name) {
    return atomOf(server, name, false);
}

template<std::size_t count>
void setHints(xcb_connection_t* server, xcb_window_t window, std::string_view property,
              xcb_atom_t type, const std::array<std::uint32_t, count>& values) {
    xcb_change_property(server, XCB_PROP_MODE_REPLACE, window, atom(server, property), type, 32,
                        count, values.data());
}

void keepBelow(QWindow& window, xcb_connection_t* server) {
    const auto id = static_cast<xcb_window_t>(window.winId());
    setHints<1>(server, id, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                {atom(server, "_NET_WM_WINDOW_TYPE_DOCK")});
    // The toolkit adds its own states to these when it shows the window.
    setHints<3>(server, id, "_NET_WM_STATE", XCB_ATOM_ATOM,
                {atom(server, "_NET_WM_STATE_STICKY"), atom(server, "_NET_WM_STATE_SKIP_TASKBAR"),
                 atom(server, "_NET_WM_STATE_SKIP_PAGER")});
    constexpr std::uint32_t allWorkspaces = 0xFFFFFFFF;
    setHints<1>(server, id, "_NET_WM_DESKTOP", XCB_ATOM_CARDINAL, {allWorkspaces});
}

bool isWayland() {
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

} // namespace

DesktopWindow::DesktopWindow(QWindow& placedWindow) : window(placedWindow) {
    window.setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint |
                    Qt::WindowDoesNotAcceptFocus);
    if (isWayland()) layer = LayerSurface::of(window);
    if (xcb_connection_t* server = xServer()) keepBelow(window, server);
}

DesktopWindow::~DesktopWindow() = default;

DesktopWindow::Dragging DesktopWindow::dragging() const {
    if (layer) return Dragging::standIn;
    return isWayland() ? Dragging::byCompositor : Dragging::itself;
}

void DesktopWindow::setPlace(const QRect& place) {
    window.setMinimumSize(place.size());
    window.setMaximumSize(place.size());
    window.setGeometry(place);
    if (layer) layer->setPlace(place);
}

} // namespace kivo

#pragma once

#include <QGuiApplication>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <xcb/xcb.h>

namespace kivo {

/// The toolkit's connection; null where the window system is another one.
inline xcb_connection_t* xServer() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 == nullptr ? nullptr : x11->connection();
}

/// What the X server answered, freed in the end; null without an answer.
template<typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
    return {reply, &std::free};
}

/// The number of a name; XCB_ATOM_NONE without an answer, and where it must exist and does not.
inline xcb_atom_t atomOf(xcb_connection_t* server, std::string_view name, bool mustExist) {
    const auto length = static_cast<std::uint16_t>(name.size());
    const auto reply = owned(xcb_intern_atom_reply(
        server, xcb_intern_atom(server, mustExist, length, name.data()), nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

} // namespace kivo

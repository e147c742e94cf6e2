#include "KivoHotKeys/GlobalHotKey.h"

#include "KivoHotKeys/PortalHotKey.h"
#include "KivoHotKeys/X11HotKey.h"
#include "KivoPanel/DisplayServer.h"

#include <utility>

namespace kivo {

std::unique_ptr<GlobalHotKey> GlobalHotKey::make(QDBusConnection session, Action action) {
    if (canGrabAll()) return std::make_unique<X11HotKey>();
    return std::make_unique<PortalHotKey>(std::move(session), std::move(action));
}

} // namespace kivo

#include "moc_GlobalHotKey.cpp"

#include "KivoDesktop/LayerSurface.h"

#include <LayerShellQt/window.h>
#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <string_view>
#include <wayland-client.h>

namespace kivo {
namespace {

template<auto destroy>
struct DestroyedBy {
    void operator()(auto* object) const { destroy(object); }
};

/// The library only finds out with a window, warns its user, and does not tell the program.
bool hasLayers(wl_display* compositor) {
    // A queue of its own, since the toolkit reads the others.
    const std::unique_ptr<wl_event_queue, DestroyedBy<wl_event_queue_destroy>> queue(
        wl_display_create_queue(compositor));
    const std::unique_ptr<void, DestroyedBy<wl_proxy_wrapper_destroy>> queued(
        wl_proxy_create_wrapper(compositor));
    if (!queue || !queued) return false;
    wl_proxy_set_queue(static_cast<wl_proxy*>(queued.get()), queue.get());
    const std::unique_ptr<wl_registry, DestroyedBy<wl_registry_destroy>> registry(
        wl_display_get_registry(static_cast<wl_display*>(queued.get())));
    if (!registry) return false;
    bool isFound = false;
    constexpr auto found = [](void* answer, wl_registry*, std::uint32_t, const char* name,
                              std::uint32_t) {
        if (name == std::string_view("zwlr_layer_shell_v1")) *static_cast<bool*>(answer) = true;
    };
    constexpr auto gone = [](void*, wl_registry*, std::uint32_t) {};
    constexpr wl_registry_listener listener{found, gone};
    wl_registry_add_listener(registry.get(), &listener, &isFound);
    wl_display_roundtrip_queue(compositor, queue.get());
    return isFound;
}

/// The screen that has the most of it, the first one where none has any; null without screens.
QScreen* screenOf(const QRect& place) {
    const QList<QScreen*> screens = QGuiApplication::screens();
    const auto most = std::ranges::max_element(screens, {}, [&place](const QScreen* screen) {
        const QRect shared = place & screen->geometry();
        return shared.width() * shared.height();
    });
    return most == screens.end() ? nullptr : *most;
}

class BottomSurface : public LayerSurface {
  public:
    explicit BottomSurface(QWindow& placedWindow)
        : window(placedWindow), layer(*LayerShellQt::Window::get(&placedWindow)) {
        using Layer = LayerShellQt::Window;
        layer.setLayer(Layer::LayerBottom);
        layer.setKeyboardInteractivity(Layer::KeyboardInteractivityNone);
        layer.setAnchors({Layer::AnchorTop, Layer::AnchorLeft});
        layer.setExclusiveZone(0);
        layer.setScope(QStringLiteral("widget"));
        // A screen that goes ends the surface; the next place brings it to another.
        layer.setCloseOnDismissed(false);
    }

    void setPlace(const QRect& place) override {
        QScreen* next = screenOf(place);
        if (next == nullptr) return;
        const QPoint corner = place.topLeft() - next->geometry().topLeft();
        layer.setMargins({corner.x(), corner.y(), 0, 0});
        if (next == screen) return;
        screen = next;
        // A surface is made for one screen.
        const bool wasVisible = window.isVisible();
        window.setVisible(false);
        window.setScreen(next);
        window.setVisible(wasVisible);
    }

  private:
    QWindow& window;
    LayerShellQt::Window& layer; ///< the window's child
    QPointer<QScreen> screen;    ///< that the surface is made for
};

} // namespace

std::unique_ptr<LayerSurface> LayerSurface::of(QWindow& window) {
    const auto* wayland = qGuiApp->nativeInterface<QNativeInterface::QWaylandApplication>();
    if (wayland == nullptr || !hasLayers(wayland->display())) return nullptr;
    return std::make_unique<BottomSurface>(window);
}

} // namespace kivo

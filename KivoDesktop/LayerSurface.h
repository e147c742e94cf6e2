#pragma once

#include <QRect>

#include <memory>

class QWindow;

namespace kivo {

/// A window on the bottom layer of a Wayland compositor: above the picture of the desktop, below
/// all windows, on all workspaces, in no task bar, and never with the keyboard. Main thread only.
class LayerSurface {
  public:
    /// Before the window is shown for the first time. Null where the compositor has no layers, and
    /// where this was built without the library that speaks of them (NoLayerSurface.cpp).
    static std::unique_ptr<LayerSurface> of(QWindow& window);

    virtual ~LayerSurface() = default;

    /// In the coordinates of all screens, but counted on its screen from the corner of what bars
    /// leave of that: the compositor says nobody how much they take. The window vanishes for a
    /// moment, and loses the pointer, on its way to another screen.
    virtual void setPlace(const QRect& place) = 0;
};

} // namespace kivo

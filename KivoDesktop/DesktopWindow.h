#pragma once

#include <QRect>

#include <memory>

class QWindow;

namespace kivo {

class LayerSurface;

/// Makes a frameless window a part of the desktop: below all other windows, on all workspaces, in
/// no task bar and no pager, and never with the keyboard. Main thread only.
///
/// On X11 it is a window of a panel's type that is kept below and keeps no room for itself. One of
/// the type "desktop", which the desktop's own window has, too, vanishes behind that at the first
/// click on the desktop (seen with openbox and xfwm4), and any other when the desktop is shown
/// (with openbox and kwin). On Wayland it is a surface of the bottom layer where the compositor has
/// layers (sway, Plasma) and this is built with the library that speaks of them; elsewhere a window
/// without a frame, where the compositor puts it.
class DesktopWindow {
  public:
    /// How the pointer takes the window along.
    enum class Dragging {
        itself,       ///< it is set to where the pointer is, as that is told
        standIn,      ///< another such window goes in place of it
        byCompositor, ///< `QWindow::startSystemMove`; nobody tells where it has got to
    };

    /// The window outlives it, has its format, and was not shown yet.
    explicit DesktopWindow(QWindow& window);
    ~DesktopWindow();

    /// Of a layer's surface the compositor tells the pointer's place alone: counted from where the
    /// surface is, or from where it was pressed, and not which of both. So one that is pressed
    /// stays where it is until it is let go, and follows its stand-in then.
    Dragging dragging() const;
    /// Whether it is a surface of a layer.
    bool isSurface() const { return layer != nullptr; }
    /// Whether anybody tells where it is.
    bool isPlaceKnown() const { return dragging() != Dragging::byCompositor; }
    /// In one size, so that compositors that tile windows leave it alone.
    void setPlace(const QRect& place);

  private:
    QWindow& window;
    std::unique_ptr<LayerSurface> layer;
};

} // namespace kivo

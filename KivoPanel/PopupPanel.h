#pragma once

#include "KivoPanel/PanelPlacement.h"

#include <QObject>
#include <QPoint>
#include <QSize>
#include <QTimer>

#include <functional>

class QWindow;

namespace kivo {

/// Makes a window behave like a menu: frameless, placed at what opened it, and closed by a press
/// anywhere else, by Escape, and by losing the keyboard. Main thread only.
///
/// On X11 the pointer and the keyboard are grabbed, since the panel and the desktop take clicks
/// without ever taking the focus. Under a Wayland compositor, also as its X11 client, a press
/// elsewhere takes the focus, and the compositor may put the window where it likes.
class PopupPanel : public QObject {
    Q_OBJECT
  public:
    using Placement = QRect (*)(QSize size, QPoint anchor, const QRect& visibleFrame);

    /// The window outlives the panel, and is not shown yet.
    explicit PopupPanel(QWindow& window, Placement placement = panelRect);

    /// Shows the window at the anchor, in screen coordinates.
    void open(QPoint anchor, QSize size);
    /// Another size while it is open; it stays at its anchor. Where the compositor has placed it,
    /// it grows no further than it stays on the screen; the next opening gives it its size.
    void resize(QSize size);
    void close();
    bool isOpen() const { return opened; }

    /// Before the first opening: makes it a menu of another window, which is shown, so that a
    /// Wayland compositor places it there. The keyboard may stay where it is (sway): the pointer is
    /// enough.
    void belongTo(QWindow& parent);

    /// Called for a press elsewhere, in screen coordinates; true keeps the window open. Whoever was
    /// pressed does not hear of it.
    std::function<bool(QPoint at, Qt::MouseButton button)> onPressElsewhere;

  signals:
    /// However it came to be closed.
    void closed();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void place(QSize size);
    void grab();
    void release();

    QWindow& window;
    const Placement placement;
    const bool grabs;
    const bool isPlacedByCompositor;
    int heightAtOpening = 0;
    QPoint anchor;
    QTimer grabTimer;
    bool opened = false;
    bool grabbed = false;
};

} // namespace kivo

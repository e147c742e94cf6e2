#pragma once

#include "KivoPanel/SavedFrame.h"

#include <QObject>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QTimer>

#include <functional>

class QMouseEvent;
class QScreen;
class QWindow;

namespace kivo {

/// Makes a window a small panel above the others: without a frame, moved by dragging it, and back
/// where it was left when it is shown again or its screen comes back. Main thread only.
///
/// A Wayland compositor places it as it likes, lets the pointer move it, and tells nobody where it
/// is: there nothing is remembered.
class FloatingPanel : public QObject {
    Q_OBJECT
  public:
    /// What happens to the keyboard as it opens.
    enum class Keyboard { stays, comes };

    /// The window outlives the panel, and is not shown yet.
    FloatingPanel(QWindow& window, SavedFrames frames);
    ~FloatingPanel() override;

    /// Shows it where it was left; where it was nowhere yet, at the anchor, as panels are placed.
    void open(QPoint anchor, QSize size, Keyboard keyboard);
    /// Another size, at the same place as far as that can be seen.
    void resize(QSize size);
    void close();
    bool isOpen() const { return opened; }

    /// The pointer, with a button pressed, takes it along until that is released.
    void startMove();
    /// Called once it rests after it was moved, or is closed or ends before.
    std::function<void(const SavedFrames& frames)> onMoved;

  signals:
    /// Its user wants it closed, by means of the window manager.
    void closeRequested();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void watch(QScreen* screen);
    void screensChanged();
    QRect wantedPlace() const;
    void place();
    void follow(const QMouseEvent& event);
    void positionChanged();
    void tellMove();
    void moved();

    QWindow& window;
    SavedFrames frames;
    QPoint anchor;
    QSize size;
    QPoint grip;    ///< where in the window it was pressed last
    QPoint pointer; ///< where it was last seen on the screen, with a button held
    bool isHeld = false;
    bool opened = false;
    QPoint placedAt;
    bool isMoving = false;       ///< by its user, since the screens are as they are
    bool followsPointer = false; ///< as nobody else moves it
    bool isProgramEnding = false;
    QTimer moveTimer;
    QTimer placeTimer;
};

} // namespace kivo

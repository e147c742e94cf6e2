#pragma once

#include "KivoPanel/Compositing.h"
#include "KivoPanel/FloatingPanel.h"
#include "Tokwatch/Desktop/QmlWindow.h"

#include <QObject>
#include <QPoint>
#include <QPropertyNotifier>

#include <functional>
#include <memory>

namespace tokwatch {

class DesktopPreferences;

/// The limits in a small panel above other windows: there as long as the user has them pinned, also
/// after a new start. Main thread only.
class PinnedPanel : public QObject {
    Q_OBJECT
  public:
    /// References outlive it. `anchor` is where it appears the first time.
    PinnedPanel(QmlRuntime& runtime, Scheduler& scheduler, QmlWindow::Content content,
                DesktopPreferences& preferences, std::function<QPoint()> anchor);

    /// Shows it where it is pinned, and leaves the keyboard where it is.
    void restore();
    /// Called when it was closed.
    std::function<void()> onClosed;

  private slots:
    void unpin();
    void startMove();

  private:
    bool isShown() const { return panel && panel->isOpen(); }
    void follow();
    void prepare();
    void makeAnew();
    void open(kivo::FloatingPanel::Keyboard keyboard);
    QSize naturalSize();

    kivo::Compositing compositing;
    std::unique_ptr<kivo::FloatingPanel> panel; ///< outlives the window, whose end ends it
    QmlWindow qmlWindow;
    DesktopPreferences& preferences;
    std::function<QPoint()> anchor;
    QPropertyNotifier pinNotifier;
};

} // namespace tokwatch

#pragma once

#include "KivoPanel/Compositing.h"
#include "KivoPanel/PopupPanel.h"
#include "Tokwatch/Desktop/QmlWindow.h"

#include <QObject>
#include <QPoint>
#include <QSize>

#include <functional>
#include <memory>
#include <optional>

namespace tokwatch {

/// The popover's window: at the status item like a menu, or an ordinary window where there is no
/// status area or the user wants a task-bar entry. Main thread only.
class PopoverWindow : public QObject {
    Q_OBJECT
  public:
    enum class Style { popup, window };
    static constexpr int width = 420;
    /// The part of the screen's height, less its bars, that it may take.
    static constexpr double heightShare = 0.8;

    /// The QML window outlives this.
    explicit PopoverWindow(QmlWindow& qmlWindow);

    /// Called when the window was closed.
    std::function<void()> onClosed;
    /// As PopupPanel's.
    std::function<bool(QPoint at, Qt::MouseButton button)> onPressElsewhere;

    /// From the next opening on.
    void setStyle(Style style);

    bool isShown() const;
    /// Shown as an ordinary window, which stays beside others.
    bool isShownAsWindow() const { return isShown() && !panel; }
    /// As high as its content, as far as there is room, and so from then on.
    void show(QPoint anchor);
    void close();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private slots:
    /// The content wants to be closed.
    void closeRequested() { close(); }

  private:
    void prepare();
    bool isOutdated() const;
    void squareCorners();
    QSize size() const;
    void resize();
    void fitContent();
    void wasClosed();

    QmlWindow& qmlWindow;
    const kivo::Compositing compositing;
    Style style = Style::popup;
    Style preparedStyle = Style::popup;
    bool isRounded = false; ///< as it was prepared, until the compositing manager ends
    QPoint shownAt;
    std::unique_ptr<kivo::PopupPanel> panel;
};

} // namespace tokwatch

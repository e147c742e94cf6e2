#pragma once

#include "KivoPanel/PopupPanel.h"
#include "Tokwatch/Desktop/QmlWindow.h"

#include <QObject>

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

    /// The QML window outlives this.
    explicit PopoverWindow(QmlWindow& qmlWindow);

    /// Called when the content has another natural height, and when the window was closed.
    std::function<void()> onContentHeight;
    std::function<void()> onClosed;
    /// As PopupPanel's.
    std::function<bool(QPoint at, Qt::MouseButton button)> onPressElsewhere;

    /// From the next opening on.
    void setStyle(Style style);

    bool isShown() const;
    /// Shown as an ordinary window, which stays beside others.
    bool isShownAsWindow() const { return isShown() && !panel; }
    void show(QPoint anchor, int width, int height);
    /// Another height while it is shown.
    void resize(int width, int height);
    void close();
    /// The natural height of the content as far as it is known, 0 before.
    double contentHeight();
    /// The height of the screen at the anchor, less its bars.
    double visibleHeight(QPoint anchor) const;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private slots:
    /// The content wants to be closed.
    void closeRequested() { close(); }

  private:
    void prepare();
    bool isOutdated() const;
    void fitContent();
    void wasClosed();

    QmlWindow& qmlWindow;
    Style style = Style::popup;
    Style preparedStyle = Style::popup;
    bool isRounded = false; ///< as it was prepared
    std::unique_ptr<kivo::PopupPanel> panel;
};

} // namespace tokwatch

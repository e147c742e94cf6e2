#pragma once

#include "Tokwatch/Desktop/PopoverWindow.h"
#include "Tokwatch/Desktop/QmlWindow.h"
#include "TokwatchCore/Support/Date.h"

#include <QPoint>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace tokwatch {

class PopoverView;
class ViewClock;

/// The popover as its user meets it: content and window, where it opens, and what clicks and keys
/// mean to it. Main thread only.
class Popover {
  public:
    /// A click this soon after the popover closed is the one that closed it.
    static constexpr Seconds reopenGuard{0.3};

    /// What others do for it, all of them there.
    struct Hooks {
        std::function<std::unique_ptr<PopoverView>()> makeView;
        std::function<void()> opened; ///< after each opening
        std::function<void()> closed; ///< after each closing, whoever closed it
        /// A right press on the status item that the popover had from the pointer; it has gone.
        std::function<void(QPoint at)> menuWanted;
    };

    /// References outlive it.
    Popover(QmlRuntime& runtime, Scheduler& scheduler, ViewClock& viewClock, Clock now,
            Hooks hooks);

    /// A click on the status item.
    void click(QPoint at);
    /// As a click, by the keyboard.
    void toggle(const QString& activationToken = {});
    /// The token lets the window take the keyboard on Wayland.
    void open(const QString& activationToken = {});
    void close() { window.close(); }
    /// Closes it where it is a popup, which lies above all other windows and keeps the keyboard.
    void giveWay();

    /// How it looks from its next opening on.
    void setStyle(PopoverWindow::Style style) { window.setStyle(style); }

    bool isShown() const { return window.isShown(); }
    /// Null where there is no window at present.
    PopoverView* view() const;
    /// Where it opens: at the last click on the item, or where the item seems to be.
    QPoint anchor() const;

  private:
    bool pressedElsewhere(QPoint at, Qt::MouseButton button);
    bool isSecondOfDoubleClick() const;
    void wasClosed();

    Scheduler& scheduler;
    ViewClock& viewClock;
    Clock now;
    Hooks hooks;
    QmlWindow content;
    PopoverWindow window;
    std::unique_ptr<ScheduledCall> countdown; ///< while it is open
    std::optional<QPoint> clickedAt;
    Date openedAt = Date::min();
    Date closedAt = Date::min();
};

} // namespace tokwatch

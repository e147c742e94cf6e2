#pragma once

#include "TokwatchCore/Support/Date.h"

#include <QPoint>

#include <functional>

namespace tokwatch {

class PopoverWindow;

/// When the popover opens and closes, and how high it is. Main thread only.
class PopoverController {
  public:
    static constexpr int width = 420;
    /// A click this soon after the popover closed is the one that closed it.
    static constexpr Seconds reopenGuard{0.3};
    /// The part of the visible height that it may take.
    static constexpr double heightShare = 0.8;

    /// The window outlives the controller. `opened` is called after each opening.
    PopoverController(PopoverWindow& window, Clock now, std::function<void()> opened);

    /// A click on the status item.
    void toggle(QPoint anchor);
    void open(QPoint anchor);
    void close();

    /// What the window has to tell.
    void contentHeightChanged();
    void closed();

  private:
    int height();

    PopoverWindow& window;
    Clock now;
    std::function<void()> opened;
    double maxHeight = 600;
    Date closedAt = Date::min();
};

} // namespace tokwatch

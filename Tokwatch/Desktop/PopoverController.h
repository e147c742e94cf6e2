#pragma once

#include "TokwatchCore/Support/Date.h"

#include <QPoint>

#include <functional>

namespace tokwatch {

/// The popover as its controller sees it: a window that may be there or not.
class PopoverSurface {
  public:
    virtual ~PopoverSurface() = default;

    virtual bool isShown() const = 0;
    virtual void show(QPoint anchor, int width, int height) = 0;
    /// Another height while it is shown.
    virtual void resize(int width, int height) = 0;
    virtual void close() = 0;
    /// The natural height of the content as far as it is known, 0 before.
    virtual double contentHeight() = 0;
    /// The height of the screen at the anchor, less its bars.
    virtual double visibleHeight(QPoint anchor) const = 0;
};

/// When the popover opens and closes, and how high it is. Main thread only.
class PopoverController {
  public:
    static constexpr int width = 420;
    /// A click this soon after the popover closed is the one that closed it.
    static constexpr Seconds reopenGuard{0.3};
    /// The part of the visible height that it may take.
    static constexpr double heightShare = 0.8;

    /// The surface outlives the controller. `opened` is called after each opening.
    PopoverController(PopoverSurface& surface, Clock now, std::function<void()> opened);

    /// A click on the status item.
    void toggle(QPoint anchor);
    void open(QPoint anchor);
    void close();

    /// To be called by the surface.
    void contentHeightChanged();
    void closed();

  private:
    int height();

    PopoverSurface& surface;
    Clock now;
    std::function<void()> opened;
    double maxHeight = 600;
    Date closedAt = Date::min();
};

} // namespace tokwatch

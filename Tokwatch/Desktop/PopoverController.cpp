#include "Tokwatch/Desktop/PopoverController.h"

#include "Tokwatch/Desktop/PopoverWindow.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tokwatch {

PopoverController::PopoverController(PopoverWindow& popover, Clock clock,
                                     std::function<void()> onOpen)
    : window(popover), now(std::move(clock)), opened(std::move(onOpen)) {}

void PopoverController::toggle(QPoint anchor) {
    if (window.isShown()) return close();
    const Seconds since = now() - closedAt;
    // A clock that was set back does not keep the popover shut.
    if (since > reopenGuard || since < Seconds{0}) open(anchor);
}

void PopoverController::open(QPoint anchor) {
    maxHeight = std::floor(heightShare * window.visibleHeight(anchor));
    window.show(anchor, width, height());
    if (opened) opened();
}

void PopoverController::close() {
    window.close();
}

void PopoverController::contentHeightChanged() {
    if (window.isShown()) window.resize(width, height());
}

void PopoverController::closed() {
    closedAt = now();
}

int PopoverController::height() {
    const double natural = window.contentHeight();
    return static_cast<int>(natural > 0 ? std::min(maxHeight, std::ceil(natural)) : maxHeight);
}

} // namespace tokwatch

#include "Tokwatch/Desktop/PopoverController.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tokwatch {

PopoverController::PopoverController(PopoverHost& popover, Clock clock,
                                     std::function<void()> onOpen)
    : host(popover), now(std::move(clock)), opened(std::move(onOpen)) {}

void PopoverController::toggle(QPoint anchor) {
    if (host.isShown()) return close();
    const Seconds since = now() - closedAt;
    // A clock that was set back does not keep the popover shut.
    if (since > reopenGuard || since < Seconds{0}) open(anchor);
}

void PopoverController::open(QPoint anchor) {
    maxHeight = std::floor(heightShare * host.visibleHeight(anchor));
    host.show(anchor, width, height());
    if (opened) opened();
}

void PopoverController::close() {
    host.close();
}

void PopoverController::contentHeightChanged() {
    if (host.isShown()) host.resize(width, height());
}

void PopoverController::closed() {
    closedAt = now();
}

int PopoverController::height() {
    const double natural = host.contentHeight();
    return static_cast<int>(natural > 0 ? std::min(maxHeight, std::ceil(natural)) : maxHeight);
}

} // namespace tokwatch

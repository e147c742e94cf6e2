#include "KivoPanel/PanelPlacement.h"

#include <algorithm>

namespace kivo {

QRect panelRect(QSize size, QPoint anchor, const QRect& visibleFrame) {
    const int leftmost = visibleFrame.left() + panelMargin;
    const int rightmost = visibleFrame.right() + 1 - panelMargin - size.width();
    const int x = std::max(leftmost, std::min(anchor.x() - size.width() / 2, rightmost));
    const bool isAbove = anchor.y() <= visibleFrame.center().y();
    const int highest = visibleFrame.top() + panelMargin;
    const int lowest = std::max(highest, visibleFrame.bottom() + 1 - panelMargin - size.height());
    int y = isAbove ? highest : lowest;
    if (visibleFrame.contains(anchor)) {
        const int clear = isAbove ? anchor.y() + anchorClearance
                                  : anchor.y() + 1 - anchorClearance - size.height();
        y = std::clamp(clear, highest, lowest);
    }
    return {QPoint(x, y), size};
}

QRect menuRect(QSize size, QPoint at, const QRect& visibleFrame) {
    const auto start = [](int press, int length, int first, int last) {
        const int after = press + 1;
        const int fits = after + length <= last + 1 ? after : press - length;
        return std::max(first, std::min(fits, last + 1 - length));
    };
    return {QPoint(start(at.x(), size.width(), visibleFrame.left(), visibleFrame.right()),
                   start(at.y(), size.height(), visibleFrame.top(), visibleFrame.bottom())),
            size};
}

} // namespace kivo

#include "KivoPanel/PanelPlacement.h"

#include <algorithm>

namespace kivo {

QRect panelRect(QSize size, QPoint anchor, const QRect& visibleFrame) {
    const int leftmost = visibleFrame.left() + panelMargin;
    const int rightmost = visibleFrame.right() + 1 - panelMargin - size.width();
    const int x = std::max(leftmost, std::min(anchor.x() - size.width() / 2, rightmost));
    const bool isAbove = anchor.y() <= visibleFrame.center().y();
    const int highest = visibleFrame.top() + panelMargin;
    const int lowest = visibleFrame.bottom() + 1 - panelMargin - size.height();
    return {QPoint(x, isAbove ? highest : std::max(highest, lowest)), size};
}

} // namespace kivo

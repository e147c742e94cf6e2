#include "Tokwatch/Pictures/Columns.h"

#include <algorithm>

namespace tokwatch {

QPainterPath columns::roundedAbove(const QRectF& rect, double radius) {
    const double r = std::min({radius, rect.width() / 2, rect.height()});
    QPainterPath path(rect.bottomLeft());
    path.lineTo(rect.left(), rect.top() + r);
    path.quadTo(rect.topLeft(), {rect.left() + r, rect.top()});
    path.lineTo(rect.right() - r, rect.top());
    path.quadTo(rect.topRight(), {rect.right(), rect.top() + r});
    path.lineTo(rect.bottomRight());
    path.closeSubpath();
    return path;
}

} // namespace tokwatch

#include "Tokwatch/Desktop/StatusAreaPlace.h"

namespace tokwatch {

QPoint likelyStatusArea(const QRect& screen, const QRect& visible, bool isRightToLeft) {
    const int above = visible.top() - screen.top();
    const int below = screen.bottom() - visible.bottom();
    const int y = below > above ? screen.bottom() : screen.top();
    return {isRightToLeft ? screen.left() : screen.right(), y};
}

} // namespace tokwatch

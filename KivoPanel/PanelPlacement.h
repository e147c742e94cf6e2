#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace kivo {

/// The distance that a panel keeps from the edges of the visible frame.
inline constexpr int panelMargin = 8;
/// Half of a usual bar's height, and the margin: as far it keeps from what opened it on a bar that
/// nobody told of (one that hides itself, or that belongs to another display server).
inline constexpr int anchorClearance = 24;

/// Where a panel goes that belongs to something at `anchor`: centred on it along the nearer of the
/// upper and the lower edge of the visible frame (the screen less its bars), and inside that frame.
/// An anchor inside the frame stays uncovered where there is room, so that another press on it is
/// not one on the panel.
QRect panelRect(QSize size, QPoint anchor, const QRect& visibleFrame);

/// Where a menu goes that a press on a point of the visible frame opened: to the right of it and
/// below, to the left and above where there is no room, and inside that frame.
QRect menuRect(QSize size, QPoint at, const QRect& visibleFrame);

} // namespace kivo

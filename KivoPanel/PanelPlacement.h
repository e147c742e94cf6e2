#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace kivo {

/// The distance that a panel keeps from the edges of the visible frame.
inline constexpr int panelMargin = 8;

/// Where a panel goes that belongs to something at `anchor`: centred on it along the nearer of the
/// upper and the lower edge of the visible frame (the screen less its bars), and inside that frame.
QRect panelRect(QSize size, QPoint anchor, const QRect& visibleFrame);

} // namespace kivo

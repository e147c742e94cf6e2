#pragma once

#include <QPainterPath>
#include <QRectF>

namespace tokwatch {

/// How the columns of days look, wherever they are drawn.
namespace columns {

inline constexpr double widthFraction = 0.7; ///< of the room that a day has
inline constexpr double cornerRadius = 2;
inline constexpr double leastHeight = 2; ///< little usage is to be seen, too

/// A rectangle whose upper corners are round.
QPainterPath roundedAbove(const QRectF& rect, double radius = cornerRadius);

} // namespace columns
} // namespace tokwatch

#pragma once

#include <QPainterPath>
#include <QRectF>

namespace tokwatch {

/// The strokes of a digit, 0…9, as centre lines for a pen of the given width whose ink fills
/// `box` from edge to edge: with whole-numbered boxes and widths the stems meet whole pixels, which
/// keeps digits legible where fonts no longer are. All digits are equally wide.
QPainterPath digitStrokes(int digit, const QRectF& box, double penWidth);

} // namespace tokwatch

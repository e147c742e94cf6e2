#pragma once

#include <QPoint>
#include <QRect>

namespace tokwatch {

/// Where the status item of this screen probably is, as long as no click has told: no protocol
/// says. Status areas stand at the end of their panel's reading direction, and panels along the
/// edge that `visible` leaves free of the whole screen; the upper one where none does.
QPoint likelyStatusArea(const QRect& screen, const QRect& visible, bool isRightToLeft);

} // namespace tokwatch

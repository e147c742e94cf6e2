#pragma once

#include "Tokwatch/Display/StatusTitle.h"
#include "Tokwatch/Pictures/StatusPictures.h"

#include <QColor>

namespace tokwatch {

/// The colour of the item on a dark or a light panel: the panel's own text colour, orange for a
/// warning, red when critical. Each stands out from its panel by at least 4.5 to 1.
QColor statusTint(Severity severity, bool onDarkPanel);

/// How a number that is no longer current is drawn: the same colour, fainter.
inline constexpr float oldOpacity = 0.55F;

/// What the item is drawn with.
struct InkChoice {
    Severity severity = Severity::normal;
    bool onDarkPanel = false;
    bool hasHalo = false; ///< keeps the drawing legible where the panel's tone is not certain
    bool isOld = false;
};
Ink statusInk(const InkChoice& choice);

} // namespace tokwatch

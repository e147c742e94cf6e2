#pragma once

#include "StatusPictures.h"
#include "StatusTitle.h"

#include <QColor>

namespace tokwatch {

/// The colour of the item on a dark or a light panel: the panel's own text colour, orange for a
/// warning, red when critical. Each stands out from its panel by at least 4.5 to 1.
QColor statusTint(Severity severity, bool onDarkPanel);

/// The tint with a halo, for a panel whose tone is a guess.
Ink statusInk(Severity severity, bool onDarkPanel, bool toneIsGuess);

} // namespace tokwatch

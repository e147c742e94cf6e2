#pragma once

#include "KivoLooks/Palette.h"
#include "Tokwatch/Display/Severity.h"

#include <QColor>

namespace tokwatch {

/// The colours of an amount: of what is filled of its bar, and of its number.
struct MeterColors {
    QColor fill;
    QColor figure;
};

/// By how severe the amount is. What is old keeps its colour, but half of it: that and the muted
/// one stand out from the ground, and so does what is between them.
MeterColors meterColors(const kivo::Palette& colors, Severity severity, bool isOld);

} // namespace tokwatch

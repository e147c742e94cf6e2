#pragma once

#include "Tokwatch/Display/Severity.h"
#include "TokwatchCore/Records/ProviderID.h"

#include <QColor>
#include <QImage>
#include <QString>

#include <optional>

namespace tokwatch {

/// The pictures of the status item, drawn in one colour on nothing. Sizes are pixels. Any thread
/// that may paint.
struct Ink {
    QColor colour;
    /// Drawn around everything, unseen on the panel that the colour is for: it keeps the drawing
    /// legible should the panel have another tone. None when the tone is known.
    QColor halo = Qt::transparent;
};

/// A provider's mark, or the application's where there is none, in a square.
QImage markPicture(std::optional<ProviderID> provider, const Ink& ink, int side);

/// The number of percent left, large, over a bar that is filled as far, in a square.
QImage gaugePicture(int percentLeft, const Ink& ink, int side);

/// A mark with text beside it, `height` high and as wide as it must be. Digits are equally wide, so
/// that the picture keeps its width while they count.
QImage titlePicture(std::optional<ProviderID> provider, const QString& text, const Ink& ink,
                    int height);

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

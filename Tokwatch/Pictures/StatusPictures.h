#pragma once

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

} // namespace tokwatch

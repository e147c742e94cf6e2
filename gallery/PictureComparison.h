#pragma once

#include <QImage>

namespace tokwatch::testing {

/// How a fresh picture relates to the one that is kept.
struct PictureComparison {
    bool isSameSize = false;
    double differing = 1; ///< the part of all pixels that differ visibly
    QImage difference;    ///< the fresh picture, faint, with what differs in red

    /// Antialiasing may differ in a few pixels from one build of the font renderer to the next;
    /// words, colours and places may not.
    bool isAlike() const { return isSameSize && differing < 0.001; }
};

PictureComparison compare(const QImage& kept, const QImage& fresh);

} // namespace tokwatch::testing

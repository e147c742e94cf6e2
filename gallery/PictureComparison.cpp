#include "gallery/PictureComparison.h"

#include <algorithm>
#include <cstdlib>

namespace tokwatch::testing {
namespace {

/// Of 255; what the eye takes for the same.
constexpr int tolerance = 40;

bool differ(QRgb a, QRgb b) {
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b))}) > tolerance;
}

QRgb faint(QRgb pixel) {
    const int gray = 192 + qGray(pixel) / 4;
    return qRgb(gray, gray, gray);
}

} // namespace

PictureComparison compare(const QImage& kept, const QImage& fresh) {
    PictureComparison result;
    result.isSameSize = kept.size() == fresh.size();
    const QImage before = kept.convertToFormat(QImage::Format_RGB32);
    const QImage after = fresh.convertToFormat(QImage::Format_RGB32);
    result.difference = after;
    long long count = 0;
    for (int y = 0; y < after.height(); ++y) {
        for (int x = 0; x < after.width(); ++x) {
            const bool isDifferent =
                !before.valid(x, y) || differ(before.pixel(x, y), after.pixel(x, y));
            if (isDifferent) ++count;
            result.difference.setPixel(x, y,
                                       isDifferent ? qRgb(220, 0, 0) : faint(after.pixel(x, y)));
        }
    }
    if (!after.size().isEmpty())
        result.differing =
            static_cast<double>(count) / (static_cast<double>(after.width()) * after.height());
    return result;
}

} // namespace tokwatch::testing

#include "KivoLooks/Measures.h"

#include <QFontDatabase>
#include <QFontInfo>

#include <algorithm>
#include <array>
#include <cmath>

namespace kivo {
namespace {

/// The desktop's family; on bare desktops, where it is only a generic name, the first good one that
/// is installed.
QString familyOf(const QFont& font) {
    static constexpr std::array generic{"Sans Serif", "Sans", "sans-serif"};
    QString family = font.family();
    if (std::ranges::find(generic, family) == generic.end()) return family;
    for (const char* candidate : {"Inter", "Cantarell", "Noto Sans"})
        if (QFontDatabase::hasFamily(candidate)) return candidate;
    return family;
}

} // namespace

TypeScale TypeScale::of(const QFont& font) {
    constexpr double usualPixels = 13;
    const double scale = std::clamp(QFontInfo(font).pixelSize() / usualPixels, 1.0, 1.25);
    const auto scaled = [scale](int pixels) {
        return static_cast<int>(std::lround(pixels * scale));
    };
    const TypeScale usual;
    return {familyOf(font),      scaled(usual.caption), scaled(usual.body),
            scaled(usual.title), scaled(usual.figure),  scaled(usual.headline)};
}

Motion Motion::of(const Appearance& appearance) {
    if (appearance.reducedMotion) return {0, 0, false};
    return {};
}

} // namespace kivo

#include "moc_Measures.cpp"

#include "KivoTheme/Theme.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>
#include <QQmlEngine>

#include <algorithm>
#include <array>
#include <cmath>

namespace kivo {
namespace {

constexpr const char* themeProperty = "kivoTheme";

/// The desktop's family; on bare desktops, where it is only a generic name, the first good one that
/// is installed.
QString familyOf(const QFont& font) {
    static constexpr std::array generic{"Sans Serif", "Sans", "sans-serif"};
    const QString family = font.family();
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

Theme::Theme(const Appearance& initial)
    : appearance(initial), palette(Palette::of(initial)),
      typeScale(TypeScale::of(QGuiApplication::font())) {}

void Theme::setAppearance(const Appearance& next) {
    if (next == appearance) return;
    appearance = next;
    palette = Palette::of(next);
    emit changed();
}

void Theme::install(QQmlEngine& engine) {
    engine.setProperty(themeProperty, QVariant::fromValue<QObject*>(this));
}

Theme* Theme::create(QQmlEngine* engine, QJSEngine*) {
    auto* theme = qobject_cast<Theme*>(engine->property(themeProperty).value<QObject*>());
    // An engine that nobody gave a theme, as tests have it, gets one of its own.
    if (theme == nullptr) return new Theme(Appearance{});
    QJSEngine::setObjectOwnership(theme, QJSEngine::CppOwnership);
    return theme;
}

} // namespace kivo

#include "moc_Theme.cpp"

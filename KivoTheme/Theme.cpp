#include "KivoTheme/Theme.h"

#include <QGuiApplication>
#include <QQmlEngine>

namespace kivo {
namespace {

constexpr const char* themeProperty = "kivoTheme";

} // namespace

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

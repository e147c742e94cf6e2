#include "KivoLooks/Palette.h"

namespace kivo {
namespace {

QColor rgb(QRgb value) {
    return QColor::fromRgb(value);
}

QList<QColor> colors(std::initializer_list<QRgb> values) {
    QList<QColor> list;
    for (const QRgb value : values)
        list.append(rgb(value));
    return list;
}

Palette light() {
    Palette p;
    p.canvas = rgb(0xF4F4F7);
    p.card = rgb(0xFFFFFF);
    p.raised = rgb(0xFFFFFF);
    p.track = rgb(0xE6E6EC);
    p.hover = rgb(0xEAEAF0);
    p.pressed = rgb(0xDFDFE7);
    p.hairline = rgb(0xE3E3EA);
    p.outline = rgb(0x878793);
    p.text = rgb(0x17171C);
    p.secondaryText = rgb(0x5B5B67);
    p.accent = rgb(0x3C56D6);
    p.accentText = rgb(0x3049C4);
    p.onAccent = rgb(0xFFFFFF);
    p.focus = rgb(0x3C56D6);
    p.knob = rgb(0xFFFFFF);
    p.timeMark = rgb(0x17171C);
    p.warning = rgb(0xB96F00);
    p.warningText = rgb(0x8A5200);
    p.critical = rgb(0xD0312D);
    p.criticalText = rgb(0xBB2320);
    p.muted = rgb(0x80808C);
    p.series = colors({0xC4582A, 0x0B7D72, 0x7A4BD3, 0x3F4A5A});
    p.parts = colors({0x22337F, 0x3C56D6, 0x7286E4, 0x5E7FA8, 0x80808C});
    p.intensity = colors({0xE6E6EC, 0xBCC7F3, 0x8799E8, 0x4F67DA, 0x27399B});
    return p;
}

Palette dark() {
    Palette p;
    p.canvas = rgb(0x1A1A1E);
    p.card = rgb(0x242429);
    p.raised = rgb(0x3F3F48);
    p.track = rgb(0x35353D);
    p.hover = rgb(0x2F2F36);
    p.pressed = rgb(0x3A3A42);
    p.hairline = rgb(0x313138);
    p.outline = rgb(0x85858F);
    p.text = rgb(0xF3F3F6);
    p.secondaryText = rgb(0xB0B0BB);
    p.accent = rgb(0x8497FF);
    p.accentText = rgb(0xA3B2FF);
    p.onAccent = rgb(0x10143A);
    p.focus = rgb(0x9AABFF);
    p.knob = rgb(0xFFFFFF);
    p.timeMark = rgb(0xFFFFFF);
    p.warning = rgb(0xF0A63A);
    p.warningText = rgb(0xF7B754);
    p.critical = rgb(0xFF6A60);
    p.criticalText = rgb(0xFF857C);
    p.muted = rgb(0x9494A0);
    p.series = colors({0xE98A5C, 0x35B9AA, 0xB094F5, 0xA7B2C4});
    p.parts = colors({0xD6DDFF, 0x9DADFF, 0x7086F5, 0x82A6CC, 0x9494A0});
    p.intensity = colors({0x35353D, 0x3C4680, 0x5566C4, 0x8497FF, 0xCBD4FF});
    return p;
}

/// Nothing faint is left: surfaces are one colour, separation is drawn.
Palette withHighContrast(Palette p, bool isDark) {
    const QColor ground = isDark ? rgb(0x000000) : rgb(0xFFFFFF);
    const QColor ink = isDark ? rgb(0xFFFFFF) : rgb(0x000000);
    p.canvas = p.card = ground;
    p.text = ink;
    p.secondaryText = isDark ? rgb(0xE2E2E8) : rgb(0x2B2B31);
    p.hairline = p.outline = isDark ? rgb(0xB9B9C2) : rgb(0x55555E);
    p.timeMark = ink;
    if (isDark) {
        p.accentText = p.accent = rgb(0xB9C5FF);
        p.warningText = p.warning = rgb(0xFFC560);
        p.criticalText = p.critical = rgb(0xFF9C94);
        p.focus = rgb(0xFFFFFF);
        p.knob = ground; // on the outline's light grey
    } else {
        p.accentText = p.accent = rgb(0x1F34A3);
        p.warningText = p.warning = rgb(0x6B3F00);
        p.criticalText = p.critical = rgb(0x9A1512);
        p.focus = rgb(0x000000);
    }
    return p;
}

} // namespace

Palette Palette::of(const Appearance& appearance) {
    const Palette base = appearance.dark ? dark() : light();
    return appearance.highContrast ? withHighContrast(base, appearance.dark) : base;
}

} // namespace kivo

#include "moc_Palette.cpp"

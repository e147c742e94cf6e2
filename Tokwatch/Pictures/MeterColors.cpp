#include "Tokwatch/Pictures/MeterColors.h"

namespace tokwatch {
namespace {

MeterColors fresh(const kivo::Palette& colors, Severity severity) {
    switch (severity) {
    case Severity::normal:
        return {colors.accent, colors.text};
    case Severity::warning:
        return {colors.warning, colors.warningText};
    case Severity::critical:
        break;
    }
    return {colors.critical, colors.criticalText};
}

QColor mixed(const QColor& color, const QColor& with) {
    constexpr float part = 0.55F;
    const auto mix = [](float a, float b) { return part * b + (1 - part) * a; };
    return QColor::fromRgbF(mix(color.redF(), with.redF()), mix(color.greenF(), with.greenF()),
                            mix(color.blueF(), with.blueF()));
}

} // namespace

MeterColors meterColors(const kivo::Palette& colors, Severity severity, bool isOld) {
    const MeterColors now = fresh(colors, severity);
    if (!isOld) return now;
    return {mixed(now.fill, colors.muted), mixed(now.figure, colors.secondaryText)};
}

} // namespace tokwatch

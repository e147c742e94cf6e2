#include "Tokwatch/StatusItem/StatusTint.h"

namespace tokwatch {

QColor statusTint(Severity severity, bool onDarkPanel) {
    switch (severity) {
    case Severity::normal:
        return onDarkPanel ? QColor(0xf2, 0xf2, 0xf2) : QColor(0x23, 0x23, 0x23);
    case Severity::warning:
        return onDarkPanel ? QColor(0xff, 0xa0, 0x33) : QColor(0xb0, 0x50, 0x00);
    case Severity::critical:
        return onDarkPanel ? QColor(0xff, 0x76, 0x6c) : QColor(0xc8, 0x1e, 0x1e);
    }
    return {};
}

Ink statusInk(const InkChoice& choice) {
    Ink ink{statusTint(choice.severity, choice.onDarkPanel)};
    if (choice.isOld) ink.colour.setAlphaF(oldOpacity);
    if (choice.hasHalo)
        ink.halo = choice.onDarkPanel ? QColor(0, 0, 0, 0xa0) : QColor(0xff, 0xff, 0xff, 0xa0);
    return ink;
}

} // namespace tokwatch

#include "Tokwatch/Views/Common/ProviderMark.h"

#include "Tokwatch/Pictures/ProviderMarks.h"

#include <QPainter>

namespace tokwatch {

void ProviderMark::setProvider(const QString& provider) {
    if (provider == name) return;
    name = provider;
    update();
    emit providerChanged();
}

int ProviderMark::series() const {
    return static_cast<int>(providerFromRawValue(name.toStdString()).value_or(ProviderID::claude));
}

void ProviderMark::draw(QPainter& painter) const {
    static_assert(markSide == field);
    painter.fillPath(mark(providerFromRawValue(name.toStdString())), color());
}

} // namespace tokwatch

#include "Tokwatch/Views/Common/ProviderMark.h"

#include "Tokwatch/Pictures/Marks.h"

#include <QPainter>

namespace tokwatch {

ProviderMark::ProviderMark(QQuickItem* parent) : GlyphItem(parent) {
    connect(this, &ProviderMark::providerChanged, this, [this] { update(); });
}

int ProviderMark::series() const {
    return seriesOf(providerFromRawValue(name.toStdString()).value_or(ProviderID::claude));
}

void ProviderMark::draw(QPainter& painter) const {
    static_assert(markSide == field);
    painter.fillPath(mark(providerFromRawValue(name.toStdString())), color());
}

} // namespace tokwatch

#include "moc_ProviderMark.cpp"
#include "moc_Segment.cpp"

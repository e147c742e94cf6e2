#include "Tokwatch/Views/Popover/Usage/BurnUpPlot.h"

#include <QPainter>
#include <QPolygonF>

namespace tokwatch {
namespace {

constexpr double lineWidth = 2;
constexpr double dotRadius = 3;
/// Around the plot, so that neither lines nor the dot are cut off.
constexpr double margin = dotRadius + 0.5;

} // namespace

void BurnUpPlot::setLine(const BurnUpLine& line) {
    shown = line;
    update();
}

void BurnUpPlot::setColors(const kivo::Palette& colors) {
    palette = colors;
    update();
}

void BurnUpPlot::setStroke(const QColor& color) {
    strokeColor = color;
    update();
}

void BurnUpPlot::setMirrored(bool mirrored) {
    isMirrored = mirrored;
    update();
}

QPointF BurnUpPlot::placed(QPointF fractions) const {
    const double x = isMirrored ? 1 - fractions.x() : fractions.x();
    return {margin + x * (width() - 2 * margin),
            margin + (1 - fractions.y()) * (height() - 2 * margin)};
}

void BurnUpPlot::paint(QPainter* painter) {
    if (shown.isEmpty()) return;
    painter->setRenderHint(QPainter::Antialiasing);
    const auto draw = [&](const QList<QPointF>& corners, const QPen& pen) {
        QPolygonF polygon;
        for (const QPointF& corner : corners)
            polygon.append(placed(corner));
        painter->setPen(pen);
        painter->drawPolyline(polygon);
    };
    draw({{0, 1}, {1, 1}}, QPen(palette.hairline, 1));
    draw({{0, 0}, {1, 0}}, QPen(palette.outline, 1));
    draw({{0, 0}, {1, 1}}, QPen(palette.timeMark, 1));
    draw(shown.used, QPen(strokeColor, lineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (!shown.forecast.isEmpty()) {
        QPen dashed(strokeColor, lineWidth, Qt::CustomDashLine, Qt::FlatCap);
        dashed.setDashPattern({2, 2});
        draw(shown.forecast, dashed);
    }
    painter->setPen(Qt::NoPen);
    painter->setBrush(strokeColor);
    painter->drawEllipse(placed(shown.used.back()), dotRadius, dotRadius);
}

} // namespace tokwatch

#include "moc_BurnUpPlot.cpp"

#include "KivoTheme/SymbolItem.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <map>
#include <numbers>

namespace kivo {
namespace {

// Each draws in a field of 24 × 24 with the pen that it is given; y points down.

QPointF onCircle(double degrees, double radius) {
    const double angle = degrees * std::numbers::pi / 180;
    return {12 + radius * std::cos(angle), 12 + radius * std::sin(angle)};
}

QPolygonF line(std::initializer_list<QPointF> points) {
    return QPolygonF(QList<QPointF>(points));
}

void dot(QPainter& painter, QPointF center, double radius) {
    painter.save();
    painter.setBrush(painter.pen().color());
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(center, radius, radius);
    painter.restore();
}

void arc(QPainter& painter, double radius, double startDegrees, double spanDegrees) {
    QPainterPath path;
    const QRectF box(12 - radius, 12 - radius, 2 * radius, 2 * radius);
    path.arcMoveTo(box, startDegrees);
    path.arcTo(box, startDegrees, spanDegrees);
    painter.drawPath(path);
}

void refresh(QPainter& painter) {
    arc(painter, 7.5, 30, 285);
    painter.drawPolyline(line({{18.5, 3.5}, {18.5, 8.3}, {13.7, 8.3}}));
}

void gear(QPainter& painter) {
    painter.drawEllipse(QPointF(12, 12), 3, 3);
    QPainterPath rim;
    constexpr int teeth = 8;
    for (int tooth = 0; tooth < teeth; ++tooth) {
        const double middle = tooth * 360.0 / teeth;
        const QPolygonF corners = line({onCircle(middle - 13.5, 6.9), onCircle(middle - 8.5, 9.6),
                                        onCircle(middle + 8.5, 9.6), onCircle(middle + 13.5, 6.9)});
        for (const QPointF& corner : corners)
            rim.elementCount() == 0 ? rim.moveTo(corner) : rim.lineTo(corner);
    }
    rim.closeSubpath();
    painter.drawPath(rim);
}

void check(QPainter& painter) {
    painter.drawPolyline(line({{5, 12.5}, {10, 17.5}, {19.5, 7}}));
}

void chevron(QPainter& painter) {
    painter.drawPolyline(line({{6.5, 9.5}, {12, 15}, {17.5, 9.5}}));
}

void close(QPainter& painter) {
    painter.drawLine(QPointF(6.5, 6.5), QPointF(17.5, 17.5));
    painter.drawLine(QPointF(17.5, 6.5), QPointF(6.5, 17.5));
}

void info(QPainter& painter) {
    painter.drawEllipse(QPointF(12, 12), 9, 9);
    painter.drawLine(QPointF(12, 11.5), QPointF(12, 16.2));
    dot(painter, {12, 7.9}, 1.3);
}

void warning(QPainter& painter) {
    painter.drawPolygon(line({{12, 4}, {21, 19.5}, {3, 19.5}}));
    painter.drawLine(QPointF(12, 10), QPointF(12, 13.6));
    dot(painter, {12, 16.7}, 1.2);
}

void lock(QPainter& painter) {
    painter.drawRoundedRect(QRectF(5, 11, 14, 9.5), 2, 2);
    QPainterPath shackle;
    shackle.moveTo(8, 11);
    shackle.lineTo(8, 8);
    shackle.arcTo(QRectF(8, 4, 8, 8), 180, -180);
    shackle.lineTo(16, 11);
    painter.drawPath(shackle);
}

void copy(QPainter& painter) {
    painter.drawRoundedRect(QRectF(9, 9, 11.5, 11.5), 2, 2);
    painter.drawPolyline(line({{5.2, 15}, {3.5, 15}, {3.5, 3.5}, {15, 3.5}, {15, 5.2}}));
}

void externalLink(QPainter& painter) {
    painter.drawPolyline(line({{11, 5}, {5, 5}, {5, 19}, {19, 19}, {19, 13}}));
    painter.drawPolyline(line({{14.5, 4}, {20, 4}, {20, 9.5}}));
    painter.drawLine(QPointF(20, 4), QPointF(11.5, 12.5));
}

void drag(QPainter& painter) {
    for (const double x : {9.0, 15.0})
        for (const double y : {6.0, 12.0, 18.0})
            dot(painter, {x, y}, 1.6);
}

void folder(QPainter& painter) {
    QPainterPath path;
    path.moveTo(3, 18);
    path.lineTo(3, 6);
    path.lineTo(9, 6);
    path.lineTo(11.5, 8.7);
    path.lineTo(21, 8.7);
    path.lineTo(21, 18);
    path.closeSubpath();
    painter.drawPath(path);
}

/// A dial whose needle stands at `fraction` of its way round.
void gauge(QPainter& painter, double fraction) {
    constexpr double start = 210;
    constexpr double span = 240;
    painter.translate(0, 1.5);
    arc(painter, 9, start, -span);
    const QPointF tip = onCircle(-start + fraction * span, 5.8);
    painter.drawLine(QPointF(12, 12), tip);
    dot(painter, {12, 12}, 1.9);
}

void downtrend(QPainter& painter) {
    painter.drawPolyline(line({{3.5, 3.5}, {3.5, 20.5}, {20.5, 20.5}}));
    painter.drawPolyline(line({{7.5, 6.5}, {12, 11.5}, {14.5, 9.5}, {20, 15.5}}));
    painter.drawPolyline(line({{20, 11.5}, {20, 15.5}, {16, 15.5}}));
}

void bell(QPainter& painter) {
    QPainterPath path;
    path.moveTo(4.5, 17);
    path.cubicTo(6.2, 15.2, 6.5, 13.5, 6.5, 10);
    path.cubicTo(6.5, 2.5, 17.5, 2.5, 17.5, 10);
    path.cubicTo(17.5, 13.5, 17.8, 15.2, 19.5, 17);
    path.closeSubpath();
    painter.drawPath(path);
    painter.drawPolyline(line({{10, 20}, {12, 20.8}, {14, 20}}));
}

void window(QPainter& painter) {
    painter.drawRoundedRect(QRectF(3, 4.5, 18, 15), 2.5, 2.5);
    painter.drawLine(QPointF(3, 9.5), QPointF(21, 9.5));
}

void layers(QPainter& painter) {
    painter.drawPolygon(line({{12, 3.5}, {20.5, 8.5}, {12, 13.5}, {3.5, 8.5}}));
    painter.drawPolyline(line({{3.5, 13}, {12, 18}, {20.5, 13}}));
}

void pin(QPainter& painter) {
    painter.drawPolygon(
        line({{9.5, 4}, {9.5, 10}, {6.5, 14.2}, {17.5, 14.2}, {14.5, 10}, {14.5, 4}}));
    painter.drawLine(QPointF(8, 4), QPointF(16, 4));
    painter.drawLine(QPointF(12, 14.2), QPointF(12, 20.5));
}

void filledPin(QPainter& painter) {
    painter.setBrush(painter.pen().color());
    pin(painter);
}

using Draw = void (*)(QPainter&);

const std::map<QString, Draw>& drawings() {
    static const std::map<QString, Draw> all{
        {"refresh", refresh},
        {"gear", gear},
        {"check", check},
        {"chevron", chevron},
        {"close", close},
        {"info", info},
        {"warning", warning},
        {"lock", lock},
        {"copy", copy},
        {"link", externalLink},
        {"drag", drag},
        {"folder", folder},
        {"bell", bell},
        {"window", window},
        {"layers", layers},
        {"pin", pin},
        {"pin.fill", filledPin},
        {"gauge.with.dots.needle.33percent", [](QPainter& p) { gauge(p, 0.33); }},
        {"gauge.with.dots.needle.50percent", [](QPainter& p) { gauge(p, 0.5); }},
        {"gauge.with.dots.needle.67percent", [](QPainter& p) { gauge(p, 0.67); }},
        {"chart.line.downtrend.xyaxis", downtrend},
    };
    return all;
}

} // namespace

void SymbolItem::setName(const QString& name) {
    if (name == symbolName) return;
    symbolName = name;
    update();
    emit nameChanged();
}

void SymbolItem::draw(QPainter& painter) const {
    if (const auto found = drawings().find(symbolName); found != drawings().end())
        found->second(painter);
}

} // namespace kivo

#include "moc_SymbolItem.cpp"

#include "Tokwatch/Pictures/Marks.h"

#include <QPainter>
#include <QPainterPath>
#include <QPainterPathStroker>
#include <QPixmap>
#include <QPointF>
#include <QPolygonF>
#include <QRectF>
#include <QTransform>

namespace tokwatch {
namespace {

constexpr QPointF centre{markSide / 2, markSide / 2};

QRectF circle(QPointF middle, double radius) {
    return {middle.x() - radius, middle.y() - radius, 2 * radius, 2 * radius};
}

QPainterPath dot(QPointF middle, double radius) {
    QPainterPath path;
    path.addEllipse(middle, radius, radius);
    return path;
}

/// Angles in degrees, counter-clockwise from three o'clock.
QPainterPath arc(QPointF middle, double radius, double from, double sweep) {
    QPainterPath path;
    path.arcMoveTo(circle(middle, radius), from);
    path.arcTo(circle(middle, radius), from, sweep);
    return path;
}

QPainterPath lines(std::initializer_list<QPointF> points) {
    QPainterPath path;
    path.addPolygon(QPolygonF(QList<QPointF>(points)));
    return path;
}

QPainterPath stroked(const QPainterPath& path, double width) {
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    return stroker.createStroke(path).simplified();
}

/// The filled outline with its corners rounded by half the width.
QPainterPath softened(const QPainterPath& path, double width) {
    return path.united(stroked(path, width));
}

/// An open ring around a dot.
QPainterPath claudeMark() {
    return stroked(arc(centre, 8.6, 42, 276), 4).united(dot(centre, 2.9));
}

/// A prompt in a block.
QPainterPath codexMark() {
    QPainterPath block;
    block.addRoundedRect(QRectF(1.5, 2.5, 21, 19), 5, 5);
    const QPainterPath prompt = stroked(lines({{6.6, 8}, {10.6, 12}, {6.6, 16}}), 2.6);
    const QPainterPath rule = stroked(lines({{13.4, 16}, {17.2, 16}}), 2.6);
    return block.subtracted(prompt).subtracted(rule);
}

/// A diamond ring around a diamond.
QPainterPath grokMark() {
    QPainterPath square;
    square.addRoundedRect(circle(centre, 7.9), 2.4, 2.4);
    QPainterPath hole;
    hole.addRoundedRect(circle(centre, 4.9), 1, 1);
    QPainterPath core;
    core.addRoundedRect(circle(centre, 2.2), 0.6, 0.6);
    const QTransform quarter = QTransform()
                                   .translate(centre.x(), centre.y())
                                   .rotate(45)
                                   .translate(-centre.x(), -centre.y());
    return quarter.map(square.subtracted(hole).united(core));
}

/// A pointer.
QPainterPath cursorMark() {
    QPainterPath pointer = lines({{5, 3.4}, {19.6, 12.6}, {12.6, 14}, {9, 20.2}, {5, 3.4}});
    return softened(pointer, 3);
}

/// A dial open at the bottom, its needle past the middle.
QPainterPath gaugeMark() {
    const QPointF hub{12, 13.6};
    const QPainterPath dial = stroked(arc(hub, 9.5, -30, 240), 3.2);
    const QPainterPath needle = stroked(lines({hub, {14.9, 9.3}}), 2.6);
    return dial.united(needle).united(dot(hub, 2.7));
}

/// The side of the square in which the icon is drawn, as in its file for the menus of desktops.
constexpr double drawn = 128;

void draw(QPainter& painter) {
    QLinearGradient ground(0, 0, 0, drawn);
    ground.setColorAt(0, QColor(0x5b, 0x74, 0xf0));
    ground.setColorAt(1, QColor(0x2c, 0x40, 0xb4));
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(8, 8, 112, 112), 26, 26);
    const QRectF dial(26, 26, 76, 76);
    const auto arc = [&](double span, double opacity) {
        QPainterPath path;
        constexpr double start = 225;
        path.arcMoveTo(dial, start);
        path.arcTo(dial, start, span);
        painter.strokePath(path, QPen(QColor::fromRgbF(1, 1, 1, static_cast<float>(opacity)), 11,
                                      Qt::SolidLine, Qt::RoundCap));
    };
    arc(-270, 0.32);
    arc(-171, 1);
    painter.setPen(QPen(Qt::white, 9, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(64, 66), QPointF(79.5, 47.5));
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(64, 66), 8.5, 8.5);
}

} // namespace

QPainterPath mark(std::optional<ProviderID> provider) {
    if (!provider) return gaugeMark();
    switch (*provider) {
    case ProviderID::claude:
        return claudeMark();
    case ProviderID::codex:
        return codexMark();
    case ProviderID::grok:
        return grokMark();
    case ProviderID::cursor:
        return cursorMark();
    }
    return gaugeMark();
}

int seriesOf(ProviderID provider) {
    return static_cast<int>(provider);
}

QIcon applicationIcon() {
    QIcon icon;
    for (const int side : {16, 24, 32, 48, 64, 128, 256}) {
        QImage picture(side, side, QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(side / drawn, side / drawn);
        draw(painter);
        painter.end();
        icon.addPixmap(QPixmap::fromImage(picture));
    }
    return icon;
}

} // namespace tokwatch

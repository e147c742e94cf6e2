#include "Tokwatch/Pictures/ApplicationIcon.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace tokwatch {
namespace {

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

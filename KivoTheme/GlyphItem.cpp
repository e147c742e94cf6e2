#include "KivoTheme/GlyphItem.h"

#include <QPainter>

namespace kivo {

GlyphItem::GlyphItem(QQuickItem* parent) : QQuickPaintedItem(parent) {
    constexpr double usualSize = 16;
    setImplicitSize(usualSize, usualSize);
    setAntialiasing(true);
}

void GlyphItem::setColor(const QColor& color) {
    if (color == glyphColor) return;
    glyphColor = color;
    update();
    emit colorChanged();
}

void GlyphItem::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::Antialiasing);
    painter->scale(width() / field, height() / field);
    constexpr double penWidth = 2;
    painter->setPen(QPen(glyphColor, penWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->setBrush(Qt::NoBrush);
    draw(*painter);
}

} // namespace kivo

#include "moc_GlyphItem.cpp"

#include "Tokwatch/Views/Popover/Stats/ChartPlot.h"

#include <QQuickWindow>

#include <algorithm>
#include <cmath>

namespace tokwatch {

ChartPlot::ChartPlot(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAcceptHoverEvents(true);
    setAcceptedMouseButtons(Qt::LeftButton);
    const auto redraw = [this] { update(); };
    connect(this, &ChartPlot::mirroredChanged, this, redraw);
    connect(this, &ChartPlot::currentChanged, this, redraw);
    connect(this, &ChartPlot::currentChanged, this, &ChartPlot::readoutChanged);
}

void ChartPlot::setColors(const kivo::Palette& colors) {
    palette = colors;
    update();
}

void ChartPlot::setType(const kivo::TypeScale& type) {
    typeScale = type;
    update();
}

const ChartReadout& ChartPlot::readout() const {
    return readoutOf(current());
}

void ChartPlot::daysChanged() {
    look(std::min(hovered, count() - 1), std::min(reached, count() - 1));
    update();
    emit readoutChanged();
}

void ChartPlot::look(int hoveredDay, int reachedDay) {
    hovered = hoveredDay;
    reached = reachedDay;
    shown = hovered >= 0 ? hovered : reached;
}

double ChartPlot::snapped(double length) const {
    const double scale = window() != nullptr ? window()->effectiveDevicePixelRatio() : 1;
    return std::round(length * scale) / scale;
}

double ChartPlot::snappedDown(double length) const {
    const double scale = window() != nullptr ? window()->effectiveDevicePixelRatio() : 1;
    return std::floor(length * scale) / scale;
}

QRectF ChartPlot::placed(const QRectF& rect) const {
    if (!mirrored) return rect;
    return {width() - rect.right(), rect.y(), rect.width(), rect.height()};
}

QFont ChartPlot::font(QFont::Weight weight) const {
    QFont font(typeScale.family);
    font.setPixelSize(typeScale.caption);
    font.setWeight(weight);
    return font;
}

int ChartPlot::leading(Qt::Alignment vertical) const {
    const Qt::Alignment horizontal = mirrored ? Qt::AlignRight : Qt::AlignLeft;
    return static_cast<int>(horizontal | vertical) | Qt::TextDontClip;
}

int ChartPlot::trailing(Qt::Alignment vertical) const {
    const Qt::Alignment horizontal = mirrored ? Qt::AlignLeft : Qt::AlignRight;
    return static_cast<int>(horizontal | vertical) | Qt::TextDontClip;
}

void ChartPlot::hoverEnterEvent(QHoverEvent* event) {
    hoverMoveEvent(event);
}

void ChartPlot::hoverMoveEvent(QHoverEvent* event) {
    look(dayAt(event->position()), reached);
}

void ChartPlot::hoverLeaveEvent(QHoverEvent*) {
    look(-1, reached);
}

void ChartPlot::mousePressEvent(QMouseEvent* event) {
    forceActiveFocus(Qt::MouseFocusReason);
    if (const int day = dayAt(event->position()); day >= 0) look(hovered, day);
}

void ChartPlot::keyPressEvent(QKeyEvent* event) {
    auto key = static_cast<Qt::Key>(event->key());
    if (mirrored && key == Qt::Key_Left)
        key = Qt::Key_Right;
    else if (mirrored && key == Qt::Key_Right)
        key = Qt::Key_Left;
    int next = 0;
    switch (key) {
    case Qt::Key_Home:
        next = 0;
        break;
    case Qt::Key_End:
        next = count() - 1;
        break;
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        next = dayAfter(current(), key);
        break;
    default:
        event->ignore();
        return;
    }
    // A key that leads nowhere is left to what is around the chart, which may scroll.
    if (next == current() && (key == Qt::Key_Up || key == Qt::Key_Down)) {
        event->ignore();
        return;
    }
    visualFocus = true;
    if (next >= 0 && next < count()) look(-1, next);
}

void ChartPlot::focusInEvent(QFocusEvent* event) {
    visualFocus =
        event->reason() != Qt::MouseFocusReason && event->reason() != Qt::ActiveWindowFocusReason;
    if (reached < 0) look(hovered, count() - 1);
}

void ChartPlot::focusOutEvent(QFocusEvent*) {
    visualFocus = false;
    look(hovered, -1);
}

} // namespace tokwatch

#include "moc_ChartPlot.cpp"

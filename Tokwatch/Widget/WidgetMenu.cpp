#include "Tokwatch/Widget/WidgetMenu.h"

#include <QCoreApplication>
#include <QFont>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPen>

#include <cmath>

namespace tokwatch {
namespace {

// As the menus of the other windows have it, at the usual size of type.
constexpr double menuWidth = 180;
constexpr double entryHeight = 28;
constexpr double lineHeight = 9;
constexpr double margin = 4;
constexpr double tickWidth = 24;

} // namespace

WidgetMenu::WidgetMenu(std::vector<Entry> what, const WidgetLooks& drawnWith)
    : entries(std::move(what)), looks(drawnWith),
      scale(looks.type.body / double(kivo::TypeScale().body)), current(entries.size()) {
    setTitle(QStringLiteral("Tokwatch"));
    connect(&panel, &kivo::PopupPanel::closed, this, &WidgetMenu::closed);
}

void WidgetMenu::open(QPoint at) {
    double height = 2 * margin * scale;
    for (const Entry& entry : entries)
        height += heightOf(entry);
    panel.open(at, QSizeF(menuWidth * scale, height).toSize());
}

double WidgetMenu::heightOf(const Entry& entry) const {
    return std::round((entry.label.isEmpty() ? lineHeight : entryHeight) * scale);
}

QRectF WidgetMenu::boxOf(std::size_t index) const {
    double top = margin * scale;
    for (std::size_t i = 0; i < index; ++i)
        top += heightOf(entries[i]);
    return {margin * scale, top, (menuWidth - 2 * margin) * scale, heightOf(entries[index])};
}

std::size_t WidgetMenu::entryAt(QPointF position) const {
    for (std::size_t i = 0; i < entries.size(); ++i)
        if (!entries[i].label.isEmpty() && boxOf(i).contains(position)) return i;
    return entries.size();
}

void WidgetMenu::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF whole(0, 0, size().width(), size().height());
    painter.setPen(QPen(looks.colors.outline, 1));
    painter.setBrush(looks.colors.card);
    painter.drawRect(whole.adjusted(0.5, 0.5, -0.5, -0.5));
    for (std::size_t i = 0; i < entries.size(); ++i)
        paintEntry(painter, i);
}

void WidgetMenu::paintEntry(QPainter& painter, std::size_t index) const {
    const Entry& entry = entries[index];
    const QRectF box = boxOf(index);
    if (entry.label.isEmpty()) {
        painter.fillRect(QRectF(box.left(), std::floor(box.center().y()), box.width(), 1),
                         looks.colors.hairline);
        return;
    }
    if (index == current) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(looks.colors.accent);
        painter.drawRoundedRect(box, margin * scale, margin * scale);
    }
    const QColor ink = index == current ? looks.colors.onAccent : looks.colors.text;
    QFont font(looks.type.family);
    font.setPixelSize(looks.type.body);
    painter.setFont(font);
    painter.setPen(ink);
    const double tick = tickWidth * scale;
    const QRectF label =
        looks.isMirrored ? box.adjusted(0, 0, -tick, 0) : box.adjusted(tick, 0, 0, 0);
    painter.drawText(
        label,
        static_cast<int>((looks.isMirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter) |
            Qt::TextSingleLine,
        entry.label);
    if (!entry.isChosen) return;
    painter.setPen(QPen(ink, 1.6 * scale, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const double x = looks.isMirrored ? box.right() - tick / 2 : box.left() + tick / 2;
    const QPointF middle(x, box.center().y());
    painter.drawPolyline(
        QPolygonF({middle + QPointF(-4, 0) * scale, middle + QPointF(-1, 3) * scale,
                   middle + QPointF(4, -4) * scale}));
}

void WidgetMenu::point(std::size_t index) {
    if (index == current) return;
    current = index;
    update();
}

void WidgetMenu::step(int direction) {
    // From none, down leads to the first and up to the last.
    const auto count = static_cast<int>(entries.size());
    int next = current < entries.size() ? static_cast<int>(current) : direction > 0 ? -1 : count;
    do
        next = (next + direction + count) % count;
    while (entries[static_cast<std::size_t>(next)].label.isEmpty());
    point(static_cast<std::size_t>(next));
}

void WidgetMenu::choose(std::size_t index) {
    if (index >= entries.size()) return;
    QMetaObject::invokeMethod(qApp, entries[index].run, Qt::QueuedConnection);
    panel.close();
}

void WidgetMenu::mouseMoveEvent(QMouseEvent* event) {
    point(entryAt(event->position()));
}

void WidgetMenu::mouseReleaseEvent(QMouseEvent* event) {
    choose(entryAt(event->position()));
}

void WidgetMenu::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Escape:
        return panel.close();
    case Qt::Key_Up:
        return step(-1);
    case Qt::Key_Down:
        return step(1);
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        return choose(current);
    default:
        return;
    }
}

bool WidgetMenu::event(QEvent* event) {
    if (event->type() == QEvent::Leave) point(entries.size());
    return QRasterWindow::event(event);
}

} // namespace tokwatch

#include "moc_WidgetMenu.cpp"

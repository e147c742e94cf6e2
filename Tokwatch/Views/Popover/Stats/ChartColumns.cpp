#include "Tokwatch/Views/Popover/Stats/ChartColumns.h"

#include "Tokwatch/Pictures/Columns.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tokwatch {
namespace {

constexpr double axisGap = 8;   ///< between the columns and the amounts beside them
constexpr double labelGap = 6;  ///< between the zero line and the days below it
constexpr double mostRoom = 56; ///< of a day, so that a single one is a column and no wall
constexpr double gapBetweenLabels = 10;

} // namespace

ChartColumns::ChartColumns(QQuickItem* parent) : ChartPlot(parent) {
    connect(this, &ChartColumns::chartChanged, this, [this] { daysChanged(); });
}

const ChartReadout& ChartColumns::readoutOf(int day) const {
    return day < 0 ? days.whole : days.columns[static_cast<std::size_t>(day)].readout;
}

int ChartColumns::dayAfter(int day, Qt::Key key) const {
    if (key == Qt::Key_Left) return day - 1;
    if (key == Qt::Key_Right) return day + 1;
    return day;
}

int ChartColumns::dayAt(QPointF position) const {
    const Layout plan = layout();
    const double x = (mirrored ? width() - position.x() : position.x()) - plan.left;
    if (count() == 0 || x < 0 || position.y() < 0) return -1;
    return std::min(static_cast<int>(x / plan.pitch), count() - 1);
}

QRectF ChartColumns::bar(const Layout& plan, int day, double from, double to) const {
    return {snapped(plan.left + day * plan.pitch), to, plan.barWidth, from - to};
}

ChartColumns::Layout ChartColumns::layout() const {
    const QFontMetricsF metrics(font());
    double amounts = 0;
    for (const ChartTick& tick : days.ticks)
        amounts = std::max(amounts, metrics.horizontalAdvance(tick.text));
    Layout plan;
    // All columns alike and on whole pixels; what is over goes in front of the first, so that today
    // is always at the end. Where that were much, as with very many days, their gaps differ
    // instead: room in front would look like days without usage.
    plan.axisLeft = snapped(std::ceil(amounts) + axisGap);
    const double pitches = std::max(count() - (1 - columns::widthFraction), 1.0);
    const double room = std::min((width() - plan.axisLeft) / pitches, mostRoom);
    constexpr double much = 0.1;
    plan.pitch = snappedDown(room) < (1 - much) * room ? room : snappedDown(room);
    plan.barWidth = snapped(snappedDown(room) * columns::widthFraction);
    plan.left = snapped(width() + plan.pitch - plan.barWidth - plan.pitch * count());
    plan.top = snapped(metrics.height() / 2);
    plan.base = snapped(height() - metrics.height() - labelGap);
    return plan;
}

void ChartColumns::paint(QPainter* painter) {
    if (count() == 0) return;
    const Layout plan = layout();
    painter->setRenderHint(QPainter::Antialiasing);
    if (current() >= 0) {
        const double gap = plan.pitch - plan.barWidth;
        const QRectF looked = bar(plan, current(), plan.base, plan.top);
        painter->setPen(Qt::NoPen);
        painter->setBrush(palette.pressed);
        painter->drawRoundedRect(placed(looked.adjusted(-gap / 2, -gap, gap / 2, 0)), 2, 2);
    }
    paintAxis(*painter, plan);
    for (int day = 0; day < count(); ++day)
        paintColumn(*painter, plan, day);
    paintLabels(*painter, plan);
}

void ChartColumns::paintAxis(QPainter& painter, const Layout& plan) const {
    const QFontMetricsF metrics(font());
    const double pixel = snapped(1);
    const double length = width() - plan.axisLeft;
    painter.setFont(font());
    painter.setPen(palette.secondaryText);
    for (const ChartTick& tick : days.ticks) {
        const double y = snapped(plan.base - tick.fraction * (plan.base - plan.top));
        painter.fillRect(placed({plan.axisLeft, y, length, pixel}), palette.hairline);
        const QRectF place(0, snapped(y - metrics.height() / 2), plan.axisLeft - axisGap,
                           metrics.height());
        painter.drawText(placed(place), trailing(Qt::AlignVCenter), tick.text);
    }
    painter.fillRect(placed({plan.axisLeft, plan.base, length, pixel}), palette.outline);
}

void ChartColumns::paintColumn(QPainter& painter, const Layout& plan, int day) const {
    const std::vector<ChartPart>& parts = days.columns[static_cast<std::size_t>(day)].parts;
    const double pixel = snapped(1);
    double sum = 0;
    for (const ChartPart& part : parts)
        sum += part.fraction;
    if (!(sum > 0)) return;
    const double whole = std::max(snapped(sum * (plan.base - plan.top)), columns::leastHeight);

    const double top = plan.base - whole;
    double from = plan.base;
    double reachedPart = 0;
    for (const ChartPart& part : parts) {
        if (!(part.fraction > 0)) continue;
        reachedPart += part.fraction;
        const double to = snapped(plan.base - whole * reachedPart / sum);
        QRectF box = bar(plan, day, from, to);
        // A line of the ground between two colours, where there is room for it.
        if (from < plan.base && box.height() >= 3 * pixel) box.setBottom(box.bottom() - pixel);
        const QColor color = palette.series.value(part.series);
        if (to <= top)
            painter.fillPath(columns::roundedAbove(placed(box)), color);
        else
            painter.fillRect(placed(box), color);
        from = to;
    }
}

void ChartColumns::paintLabels(QPainter& painter, const Layout& plan) const {
    const double y = plan.base + labelGap;
    double freeUntil = std::numeric_limits<double>::infinity();
    // From today back: of two that collide the later one stays.
    for (int day = count() - 1; day >= 0; --day) {
        const QString& label = days.columns[static_cast<std::size_t>(day)].label;
        if (label.isEmpty()) continue;
        const bool isToday = day == count() - 1;
        const QFont labelFont = font(isToday ? QFont::DemiBold : QFont::Normal);
        const QFontMetricsF metrics(labelFont);
        const double textWidth = std::ceil(metrics.horizontalAdvance(label));
        const double middle = bar(plan, day, 0, 0).center().x();
        const double x = snapped(std::min(middle - textWidth / 2, width() - textWidth));
        if (x < 0 || x + textWidth > freeUntil) continue;
        painter.setFont(labelFont);
        painter.setPen(isToday ? palette.text : palette.secondaryText);
        painter.drawText(placed({x, y, textWidth, metrics.height()}),
                         Qt::AlignCenter | Qt::TextDontClip, label);
        freeUntil = x - gapBetweenLabels;
    }
}

} // namespace tokwatch

#include "moc_ChartColumns.cpp"

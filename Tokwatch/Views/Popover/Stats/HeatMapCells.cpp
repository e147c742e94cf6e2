#include "Tokwatch/Views/Popover/Stats/HeatMapCells.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

namespace tokwatch {
namespace {

constexpr int weekdays = 7;
constexpr double cellGap = 3;
constexpr double monthGap = 4; ///< between the months and the cells below them
constexpr double cellRadius = 3;
constexpr double ringWidth = 1.5;

struct WeekdayLabel {
    int weekday;
    const char* text;
};
/// Enough to tell the rows by.
constexpr std::array<WeekdayLabel, 3> weekdayLabels{{{0, "Mon"}, {2, "Wed"}, {4, "Fri"}}};

void paintRounded(QPainter& painter, const QRectF& rect, const QColor& fill, double radius) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(rect, radius, radius);
}

/// The ring takes the cell's edge, and a line of the ground keeps it apart from the fill, whatever
/// that is.
void paintRinged(QPainter& painter, const QRectF& rect, const QColor& fill, const QColor& ring) {
    constexpr double middle = ringWidth / 2;
    constexpr double inner = 2 * ringWidth;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(ring, ringWidth));
    painter.drawRoundedRect(rect.adjusted(middle, middle, -middle, -middle), cellRadius,
                            cellRadius);
    paintRounded(painter, rect.adjusted(inner, inner, -inner, -inner), fill, cellRadius / 2);
}

} // namespace

HeatMapCells::HeatMapCells(QQuickItem* parent) : ChartPlot(parent) {
    connect(this, &HeatMapCells::calendarChanged, this, [this] { daysChanged(); });
}

const ChartReadout& HeatMapCells::readoutOf(int day) const {
    return day < 0 ? days.whole : days.cells[static_cast<std::size_t>(day)].readout;
}

int HeatMapCells::dayAfter(int day, Qt::Key key) const {
    const int weekday = day < 0 ? 0 : days.cells[static_cast<std::size_t>(day)].weekday;
    switch (key) {
    case Qt::Key_Left:
        return day - weekdays;
    case Qt::Key_Right:
        return day + weekdays;
    case Qt::Key_Up:
        return weekday > 0 && day > 0 ? day - 1 : day;
    case Qt::Key_Down:
        return weekday < weekdays - 1 && day + 1 < count() ? day + 1 : day;
    default:
        return day;
    }
}

int HeatMapCells::dayAt(QPointF position) const {
    const Layout plan = layout();
    const double x = (mirrored ? width() - position.x() : position.x()) - plan.left;
    const double y = position.y() - plan.top;
    if (x < 0 || y < 0) return -1;
    const int week = static_cast<int>(x / plan.pitchX);
    const int weekday = static_cast<int>(y / plan.pitchY);
    const auto found = std::ranges::find_if(days.cells, [&](const HeatMapCell& cell) {
        return cell.week == week && cell.weekday == weekday;
    });
    return found == days.cells.end() ? -1 : static_cast<int>(found - days.cells.begin());
}

QRectF HeatMapCells::Layout::cell(int week, int weekday) const {
    return {left + week * pitchX, top + weekday * pitchY, pitchX - gap, pitchY - gap};
}

HeatMapCells::Layout HeatMapCells::layout() const {
    const QFontMetricsF metrics(font());
    double labels = 0;
    for (const WeekdayLabel& label : weekdayLabels)
        labels = std::max(labels, metrics.horizontalAdvance(label.text));
    const double room = width() - std::ceil(labels) - 2 * monthGap;
    Layout plan;
    plan.gap = snapped(cellGap);
    plan.pitchX = snappedDown((room + plan.gap) / std::max(days.weeks, 1));
    plan.top = snapped(std::ceil(metrics.height()) + monthGap);
    plan.pitchY = snappedDown((height() - plan.top + plan.gap) / weekdays);
    plan.left = snapped(width() + plan.gap - days.weeks * plan.pitchX);
    return plan;
}

void HeatMapCells::paint(QPainter* painter) {
    if (count() == 0) return;
    const Layout plan = layout();
    painter->setRenderHint(QPainter::Antialiasing);
    for (int day = 0; day < count(); ++day) {
        const HeatMapCell& cell = days.cells[static_cast<std::size_t>(day)];
        const QRectF rect = placed(plan.cell(cell.week, cell.weekday));
        const QColor fill = palette.intensity.value(cell.step);
        if (day == current())
            paintRinged(*painter, rect, fill, palette.focus);
        else if (day == count() - 1)
            paintRinged(*painter, rect, fill, palette.text);
        else
            paintRounded(*painter, rect, fill, cellRadius);
    }
    paintLabels(*painter, plan);
}

void HeatMapCells::paintLabels(QPainter& painter, const Layout& plan) const {
    const QFontMetricsF metrics(font());
    painter.setFont(font());
    painter.setPen(palette.secondaryText);
    for (const WeekdayLabel& label : weekdayLabels) {
        const QRectF cell = plan.cell(0, label.weekday);
        painter.drawText(placed({0, cell.y(), plan.left, cell.height()}), leading(Qt::AlignVCenter),
                         label.text);
    }
    for (const HeatMapMonth& month : days.months) {
        const double x = plan.cell(month.week, 0).x();
        painter.drawText(placed({x, 0, width() - x, metrics.height()}), leading(Qt::AlignTop),
                         month.text);
    }
}

} // namespace tokwatch

#include "moc_HeatMapCells.cpp"

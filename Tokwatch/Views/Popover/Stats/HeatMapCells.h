#pragma once

#include "Tokwatch/Views/Popover/Stats/ChartPlot.h"
#include "Tokwatch/Views/Popover/Stats/HeatMapDays.h"

namespace tokwatch {

/// The calendar of a summary's days.
class HeatMapCells : public ChartPlot {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(tokwatch::HeatMapDays calendar MEMBER days NOTIFY calendarChanged)
  public:
    explicit HeatMapCells(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

  signals:
    void calendarChanged();

  protected:
    int count() const override { return static_cast<int>(days.cells.size()); }
    int dayAt(QPointF position) const override;
    int dayAfter(int day, Qt::Key key) const override;
    const ChartReadout& readoutOf(int day) const override;

  private:
    /// In the item's coordinates, unmirrored.
    struct Layout {
        double pitchX = 0; ///< from cell to cell
        double pitchY = 0;
        double gap = 0;  ///< between cells
        double left = 0; ///< where the cells begin
        double top = 0;
        QRectF cell(int week, int weekday) const;
    };
    Layout layout() const;
    void paintLabels(QPainter& painter, const Layout& layout) const;

    HeatMapDays days;
};

} // namespace tokwatch

#pragma once

#include "Tokwatch/Views/Popover/Stats/ChartDays.h"
#include "Tokwatch/Views/Popover/Stats/ChartPlot.h"

namespace tokwatch {

/// The stacked columns of a summary's days with their axes.
class ChartColumns : public ChartPlot {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(tokwatch::ChartDays chart MEMBER days NOTIFY chartChanged)
  public:
    explicit ChartColumns(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

  signals:
    void chartChanged();

  protected:
    int count() const override { return static_cast<int>(days.columns.size()); }
    int dayAt(QPointF position) const override;
    int dayAfter(int day, Qt::Key key) const override;
    const ChartReadout& readoutOf(int day) const override;

  private:
    /// In the item's coordinates, unmirrored.
    struct Layout {
        double axisLeft = 0; ///< where the lines begin, beside their amounts
        double left = 0;     ///< where the columns begin
        double pitch = 0;    ///< from column to column
        double barWidth = 0; ///< of a column
        double top = 0;      ///< of the axis
        double base = 0;     ///< the zero line
    };
    Layout layout() const;
    QRectF bar(const Layout& layout, int day, double from, double to) const;
    void paintAxis(QPainter& painter, const Layout& layout) const;
    void paintColumn(QPainter& painter, const Layout& layout, int day) const;
    void paintLabels(QPainter& painter, const Layout& layout) const;

    ChartDays days;
};

} // namespace tokwatch

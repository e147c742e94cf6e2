#pragma once

#include "KivoLooks/Measures.h"
#include "KivoLooks/Palette.h"
#include "Tokwatch/Views/Popover/Stats/ChartReadout.h"

#include <QProperty>
#include <QQuickPaintedItem>
#include <qqmlregistration.h>

namespace tokwatch {

/// A drawing of days, one of which can be looked at: the one under the pointer, or else the one
/// that the arrow keys, Home and End lead to. A press puts the keyboard there too.
///
/// Drawn as one picture, since software rendering is the rule: an item for each mark would cost
/// more than all the drawing.
class ChartPlot : public QQuickPaintedItem {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(kivo::Palette colors MEMBER palette WRITE setColors)
    Q_PROPERTY(kivo::TypeScale type MEMBER typeScale WRITE setType)
    Q_PROPERTY(bool mirrored MEMBER mirrored NOTIFY mirroredChanged)
    Q_PROPERTY(int current READ current NOTIFY currentChanged)
    Q_PROPERTY(tokwatch::ChartReadout readout READ readout NOTIFY readoutChanged)
    Q_PROPERTY(bool visualFocus READ hasVisualFocus NOTIFY visualFocusChanged)
  public:
    explicit ChartPlot(QQuickItem* parent = nullptr);

    void setColors(const kivo::Palette& colors);
    void setType(const kivo::TypeScale& type);

    /// The day that is looked at, by its place from the oldest; −1 for none.
    int current() const { return shown; }
    const ChartReadout& readout() const;
    bool hasVisualFocus() const { return visualFocus; }

  signals:
    void mirroredChanged();
    void currentChanged();
    void readoutChanged();
    void visualFocusChanged();

  protected:
    virtual int count() const = 0;
    /// The day drawn there; −1 for none.
    virtual int dayAt(QPointF position) const = 0;
    /// The day that a key leads to, which may lie outside of all days. Left leads into the past
    /// here, whatever the mirroring.
    virtual int dayAfter(int day, Qt::Key key) const = 0;
    /// Of a day, or of all for −1.
    virtual const ChartReadout& readoutOf(int day) const = 0;
    /// To be called when the days are others.
    void daysChanged();

    /// The nearest whole pixel of the screen.
    double snapped(double length) const;
    double snappedDown(double length) const;
    /// A rectangle that is laid out from the left where it belongs on the screen.
    QRectF placed(const QRectF& rect) const;
    QFont font(QFont::Weight weight = QFont::Normal) const;
    /// How a painter is to place a text at the beginning, or at the end, of its rectangle.
    int leading(Qt::Alignment vertical) const;
    int trailing(Qt::Alignment vertical) const;

    kivo::Palette palette;
    kivo::TypeScale typeScale;
    bool mirrored = false;

    void hoverEnterEvent(QHoverEvent* event) override;
    void hoverMoveEvent(QHoverEvent* event) override;
    void hoverLeaveEvent(QHoverEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    void look(int hoveredDay, int reachedDay);

    int hovered = -1;
    int reached = -1;
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ChartPlot, int, shown, -1, &ChartPlot::currentChanged)
    Q_OBJECT_BINDABLE_PROPERTY(ChartPlot, bool, visualFocus, &ChartPlot::visualFocusChanged)
};

} // namespace tokwatch

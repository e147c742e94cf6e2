#pragma once

#include "KivoLooks/Palette.h"
#include "Tokwatch/Views/Popover/Usage/BurnUpLine.h"

#include <QColor>
#include <QQuickPaintedItem>
#include <qqmlregistration.h>

namespace tokwatch {

/// Draws what was used of a limit against time, the even pace (the diagonal), and the forecast
/// (dashed). Nothing in it can be pointed at.
class BurnUpPlot : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(tokwatch::BurnUpLine line MEMBER shown WRITE setLine)
    Q_PROPERTY(kivo::Palette colors MEMBER palette WRITE setColors)
    Q_PROPERTY(QColor stroke MEMBER strokeColor WRITE setStroke)
    Q_PROPERTY(bool mirrored MEMBER isMirrored WRITE setMirrored)
  public:
    using QQuickPaintedItem::QQuickPaintedItem;

    void setLine(const BurnUpLine& line);
    void setColors(const kivo::Palette& colors);
    void setStroke(const QColor& color);
    void setMirrored(bool mirrored);
    void paint(QPainter* painter) override;

  private:
    QPointF placed(QPointF fractions) const;

    BurnUpLine shown;
    kivo::Palette palette;
    QColor strokeColor; ///< of the line of use
    bool isMirrored = false;
};

} // namespace tokwatch

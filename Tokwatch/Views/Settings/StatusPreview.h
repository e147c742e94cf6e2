#pragma once

#include "Tokwatch/Views/Settings/TitlePreview.h"

#include <QColor>
#include <QImage>
#include <QQuickPaintedItem>
#include <qqmlregistration.h>

namespace tokwatch {

/// What a light or a dark panel looks like.
QColor panelColor(bool isDark);

/// A picture of the status item, drawn as the item itself is: "StatusPreview" in QML. It is as
/// large as what it shows.
class StatusPreview : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(tokwatch::TitlePreview title MEMBER shown NOTIFY titleChanged)
    Q_PROPERTY(bool onDarkPanel MEMBER dark NOTIFY panelChanged)
    Q_PROPERTY(bool isSquare MEMBER square NOTIFY shapeChanged)
    Q_PROPERTY(QColor panelColor READ panelColor NOTIFY panelChanged)
  public:
    explicit StatusPreview(QQuickItem* parent = nullptr);

    QColor panelColor() const { return tokwatch::panelColor(dark); }

    void paint(QPainter* painter) override;

  signals:
    void titleChanged();
    void panelChanged();
    void shapeChanged();

  protected:
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void componentComplete() override;

  private:
    void redraw();

    TitlePreview shown;
    bool dark = false;
    bool square = false; ///< as hosts show it that give every item a square
    QImage picture;
};

} // namespace tokwatch

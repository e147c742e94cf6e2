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
    Q_PROPERTY(tokwatch::TitlePreview title READ title WRITE setTitle NOTIFY titleChanged)
    Q_PROPERTY(bool onDarkPanel READ isOnDarkPanel WRITE setOnDarkPanel NOTIFY panelChanged)
    Q_PROPERTY(bool isSquare READ isSquare WRITE setSquare NOTIFY shapeChanged)
    Q_PROPERTY(QColor panelColor READ panelColor NOTIFY panelChanged)
  public:
    explicit StatusPreview(QQuickItem* parent = nullptr);

    const TitlePreview& title() const { return shown; }
    void setTitle(const TitlePreview& title);
    bool isOnDarkPanel() const { return dark; }
    void setOnDarkPanel(bool isDark);
    /// As hosts show it that give every item a square.
    bool isSquare() const { return square; }
    void setSquare(bool isSquare);
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
    bool square = false;
    QImage picture;
};

} // namespace tokwatch

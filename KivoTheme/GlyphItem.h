#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <qqmlregistration.h>

namespace kivo {

/// A one-coloured drawing on a square, drawn anew at every scale. Those who derive from it draw in
/// a field of 24 × 24 with a round pen and a brush of the item's colour.
class GlyphItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
  public:
    static constexpr double field = 24;

    explicit GlyphItem(QQuickItem* parent = nullptr);
    void paint(QPainter* painter) final;

    QColor color() const { return glyphColor; }
    void setColor(const QColor& color);

  signals:
    void colorChanged();

  protected:
    virtual void draw(QPainter& painter) const = 0;

  private:
    QColor glyphColor;
};

} // namespace kivo

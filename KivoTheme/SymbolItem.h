#pragma once

#include "KivoTheme/GlyphItem.h"

#include <QString>

namespace kivo {

/// The interface's own symbols, by name: "Symbol" in QML. An unknown name draws nothing.
class SymbolItem : public GlyphItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(Symbol)
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
  public:
    using GlyphItem::GlyphItem;

    QString name() const { return symbolName; }
    void setName(const QString& name);

  signals:
    void nameChanged();

  protected:
    void draw(QPainter& painter) const override;

  private:
    QString symbolName;
};

} // namespace kivo

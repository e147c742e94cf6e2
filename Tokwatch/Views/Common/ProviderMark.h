#pragma once

#include "KivoTheme/GlyphItem.h"

#include <QString>

namespace tokwatch {

/// A provider's sign by the provider's raw value, the application's for any other name:
/// "ProviderMark" in QML.
class ProviderMark : public kivo::GlyphItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString provider MEMBER name NOTIFY providerChanged)
    Q_PROPERTY(int series READ series NOTIFY providerChanged)
  public:
    explicit ProviderMark(QQuickItem* parent = nullptr);

    /// The provider's place among the theme's side-by-side colours; 0 for no provider.
    int series() const;

  signals:
    void providerChanged();

  protected:
    void draw(QPainter& painter) const override;

  private:
    QString name;
};

} // namespace tokwatch

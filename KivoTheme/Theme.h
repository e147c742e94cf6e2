#pragma once

#include "KivoLooks/Measures.h"
#include "KivoLooks/Palette.h"

#include <QObject>
#include <qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

namespace kivo {

/// The one place where the interface's looks come from: "Theme" in QML. Main thread only.
class Theme : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(kivo::Palette colors READ colors NOTIFY changed)
    Q_PROPERTY(kivo::TypeScale type READ type NOTIFY changed)
    Q_PROPERTY(kivo::Spacing space READ space CONSTANT)
    Q_PROPERTY(kivo::Motion motion READ motion NOTIFY changed)
    Q_PROPERTY(bool dark READ isDark NOTIFY changed)
    Q_PROPERTY(bool highContrast READ isHighContrast NOTIFY changed)
  public:
    /// No default: the engine would then make its own instead of calling `create`.
    explicit Theme(const Appearance& appearance);

    void setAppearance(const Appearance& next);

    const Palette& colors() const { return palette; }
    const TypeScale& type() const { return typeScale; }
    Spacing space() const { return {}; }
    Motion motion() const { return Motion::of(appearance); }
    bool isDark() const { return appearance.dark; }
    bool isHighContrast() const { return appearance.highContrast; }

    /// Makes this the "Theme" of an engine, which it has to outlive. Before the engine loads
    /// anything.
    void install(QQmlEngine& engine);
    static Theme* create(QQmlEngine* engine, QJSEngine*);

  signals:
    void changed();

  private:
    Appearance appearance;
    Palette palette;
    TypeScale typeScale;
};

} // namespace kivo

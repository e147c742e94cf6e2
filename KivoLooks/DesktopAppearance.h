#pragma once

#include "KivoLooks/Palette.h"

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariant>

#include <optional>

namespace kivo {

/// What the desktop asks for, followed live: from the settings portal where there is one, else from
/// the name of the xfce theme, else from the application's palette. Main thread only.
class DesktopAppearance : public QObject {
    Q_OBJECT
  public:
    explicit DesktopAppearance(QDBusConnection bus, QObject* parent = nullptr);

    const Appearance& current() const { return appearance; }

    /// One setting as the portal names and encodes it; unknown ones are ignored.
    void setPortalSetting(const QString& group, const QString& key, const QVariant& value);
    /// The name of the desktop's theme; dark ones say so in it.
    void setThemeName(const QString& name);

  signals:
    void changed();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private slots:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);
    void xfceSettingChanged(const QString& channel, const QString& property,
                            const QDBusVariant& value);

  private:
    void read(QDBusConnection bus, const QString& group, const QString& key);
    void readThemeName(QDBusConnection bus);
    void decideTone();
    void assign(const Appearance& next);

    Appearance appearance;
    std::optional<bool> portalDark; ///< none while the portal names no scheme
    std::optional<bool> themeDark;
};

} // namespace kivo

#pragma once

#include "StatusAreaHost.h"

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>

#include <optional>

namespace kivo {

/// Whether the panel that holds the status area is dark, for pictures that must stand out from it.
/// A panel does not say so; it follows from the host's kind, the panel's own settings, or the
/// desktop. Main thread only.
class PanelTone : public QObject {
    Q_OBJECT
  public:
    PanelTone(QDBusConnection bus, const StatusAreaHost& host, QObject* parent = nullptr);

    bool isDark() const { return dark; }
    /// Whether the desktop is dark as a whole: what panels follow that have no tone of their own.
    void setDesktopDark(bool isDark);

  signals:
    void changed();

  private slots:
    void settingChanged(const QString& channel, const QString& property, const QDBusVariant& value);

  private:
    void hostChanged();
    void readSetting(const char* channel, const char* property);
    void update();

    QDBusConnection bus;
    const StatusAreaHost& host;
    bool followsSettings = false;
    std::optional<bool> panelDark;    ///< the xfce panel's own switch
    std::optional<bool> gtkThemeDark; ///< what the name of the theme says
    bool desktopDark = false;
    bool dark = false;
};

} // namespace kivo

#pragma once

#include "KivoMenuBar/StatusAreaHost.h"

#include <QColor>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QFileSystemWatcher>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>

namespace kivo {

/// Whether the panel that holds the status area is dark, for pictures that must stand out from it.
/// A panel does not say so; it follows from the host's kind, the panel's own settings, or the
/// desktop. Main thread only.
class PanelTone : public QObject {
    Q_OBJECT
  public:
    /// The colour of the text in a host that has a style sheet, by the host's process.
    using TextColour = std::function<std::optional<QColor>(uint process)>;

    PanelTone(QDBusConnection bus, const StatusAreaHost& host, QObject* parent = nullptr,
              TextColour textColour = systemTextColour);

    bool isDark() const { return dark; }
    /// Whether nothing but habit speaks for the tone: what is drawn should be legible on the other.
    bool isGuess() const { return guess; }
    /// Whether the desktop is dark as a whole: what panels follow that have no tone of their own.
    void setDesktopDark(bool isDark);

    /// From the style sheet that the process uses.
    static std::optional<QColor> systemTextColour(uint process);

  signals:
    void changed();

  private slots:
    void settingChanged(const QString& channel, const QString& property, const QDBusVariant& value);
    void readPlasma();

  private:
    void hostChanged();
    void readSetting(const char* channel, const char* property);
    void update();

    QDBusConnection bus;
    const StatusAreaHost& host;
    TextColour textColour;
    bool followsSettings = false;
    std::optional<bool> sheetDark;    ///< what the colour of the text in a style sheet says
    std::optional<bool> panelDark;    ///< the xfce panel's own switch
    std::optional<bool> gtkThemeDark; ///< what the name of the theme says
    std::optional<bool> plasmaDark;   ///< what Plasma's settings say
    QFileSystemWatcher plasmaFiles;
    bool desktopDark = false;
    bool dark = false;
    bool guess = false;
};

} // namespace kivo

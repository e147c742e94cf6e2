#pragma once

#include "KivoMenuBar/DBusMenu.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QSet>
#include <QString>

#include <memory>

class QWindow;

namespace kivo {

/// The program's main menu, where the desktop shows one outside of windows: while somebody owns
/// com.canonical.AppMenu.Registrar, each of our windows that gets the keyboard is registered with
/// it, X11's alone, as a registrar knows no others. Elsewhere there is nothing of it but a watch on
/// the bus; the keys of the windows do the same. Nobody is waited for. Main thread only.
class MainMenu : public QObject {
    Q_OBJECT
  public:
    static constexpr const char* registrarName =
        "com.canonical.AppMenu.Registrar"; ///< and interface
    static constexpr const char* registrarPath = "/com/canonical/AppMenu/Registrar";
    static constexpr const char* menuPath = "/MainMenu";

    MainMenu(QDBusConnection bus, QString title, DBusMenu::Builder build);

    /// What it offers is something else.
    void rebuild();

  private:
    void registrarChanged(const QString& owner);
    void add(QWindow* window);
    void callRegistrar(const char* method, const QVariantList& arguments);

    QDBusConnection bus;
    QDBusServiceWatcher watcher;
    QString title;
    DBusMenu::Builder build;
    std::unique_ptr<DBusMenu> menu; ///< while there is a registrar
    QSet<QWindow*> registered;
};

} // namespace kivo

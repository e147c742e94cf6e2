#include "KivoMenuBar/MainMenu.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QGuiApplication>
#include <QWindow>

#include <utility>

namespace kivo {

MainMenu::MainMenu(QDBusConnection connection, QString menuTitle, DBusMenu::Builder builder)
    : bus(std::move(connection)),
      watcher(registrarName, bus, QDBusServiceWatcher::WatchForOwnerChange),
      title(std::move(menuTitle)), build(std::move(builder)) {
    if (!bus.isConnected() || QGuiApplication::platformName() != QLatin1String("xcb")) return;
    connect(
        &watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString&, const QString&, const QString& owner) { registrarChanged(owner); });
    QDBusMessage question = QDBusMessage::createMethodCall(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetNameOwner");
    question.setArguments({QString(registrarName)});
    auto* asking = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(asking, &QDBusPendingCallWatcher::finished, this, [this, asking] {
        asking->deleteLater();
        if (!asking->isError()) registrarChanged(asking->reply().arguments().value(0).toString());
    });
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &MainMenu::add);
}

void MainMenu::rebuild() {
    if (menu) menu->rebuild();
}

/// A new registrar knows nothing of what its predecessor was told.
void MainMenu::registrarChanged(const QString& owner) {
    registered.clear();
    if (owner.isEmpty()) return menu.reset();
    if (!menu) menu = std::make_unique<DBusMenu>(bus, menuPath, build, nullptr, title);
    add(QGuiApplication::focusWindow());
}

void MainMenu::add(QWindow* window) {
    // What no window manager knows is no window to a registrar either.
    if (!menu || window == nullptr || window->flags().testFlag(Qt::BypassWindowManagerHint) ||
        registered.contains(window))
        return;
    registered.insert(window);
    const auto number = static_cast<uint>(window->winId());
    callRegistrar("RegisterWindow", {number, QVariant::fromValue(QDBusObjectPath(menuPath))});
    connect(window, &QObject::destroyed, this, [this, window, number] {
        if (registered.remove(window)) callRegistrar("UnregisterWindow", {number});
    });
}

void MainMenu::callRegistrar(const char* method, const QVariantList& arguments) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(registrarName, registrarPath, registrarName, method);
    call.setArguments(arguments);
    call.setAutoStartService(false);
    bus.send(call);
}

} // namespace kivo

#include "moc_MainMenu.cpp"

#pragma once

#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace kivo {

/// A menu item with what is below it, D-Bus type (ia{sv}av).
struct MenuLayoutItem {
    int id = 0;
    QVariantMap properties;
    QList<MenuLayoutItem> children;
};

/// One item's properties, D-Bus type (ia{sv}).
struct MenuItemProperties {
    int id = 0;
    QVariantMap properties;
};

/// Names of properties that an item no longer has, D-Bus type (ias).
struct MenuItemKeys {
    int id = 0;
    QStringList names;
};

/// What happened to one item, D-Bus type (isvu): "clicked", "hovered", "opened" or "closed".
struct MenuEvent {
    int id = 0;
    QString type;
    QDBusVariant data;
    uint timestamp = 0;
};

/// Key combinations, each a list such as ["Control", "q"]; D-Bus type aas.
using MenuShortcut = QList<QStringList>;

QDBusArgument& operator<<(QDBusArgument& argument, const MenuLayoutItem& item);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuLayoutItem& item);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuItemProperties& item);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuItemProperties& item);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuItemKeys& keys);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuItemKeys& keys);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& event);

/// Makes the types above known to QtDBus; any number of times.
void registerMenuTypes();

} // namespace kivo

Q_DECLARE_METATYPE(kivo::MenuLayoutItem)
Q_DECLARE_METATYPE(kivo::MenuItemProperties)
Q_DECLARE_METATYPE(kivo::MenuItemKeys)
Q_DECLARE_METATYPE(kivo::MenuEvent)

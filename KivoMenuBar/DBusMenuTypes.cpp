#include "KivoMenuBar/DBusMenuTypes.h"

#include <QDBusMetaType>

namespace kivo {

QDBusArgument& operator<<(QDBusArgument& argument, const MenuLayoutItem& item) {
    argument.beginStructure();
    argument << item.id << item.properties;
    argument.beginArray(QMetaType::fromType<QDBusVariant>());
    for (const MenuLayoutItem& child : item.children)
        argument << QDBusVariant(QVariant::fromValue(child));
    argument.endArray();
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuLayoutItem& item) {
    item.children.clear();
    argument.beginStructure();
    argument >> item.id >> item.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        item.children.append(qdbus_cast<MenuLayoutItem>(child.variant()));
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuItemProperties& item) {
    argument.beginStructure();
    argument << item.id << item.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuItemProperties& item) {
    argument.beginStructure();
    argument >> item.id >> item.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuItemKeys& keys) {
    argument.beginStructure();
    argument << keys.id << keys.names;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuItemKeys& keys) {
    argument.beginStructure();
    argument >> keys.id >> keys.names;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& event) {
    argument.beginStructure();
    argument << event.id << event.type << event.data << event.timestamp;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& event) {
    argument.beginStructure();
    argument >> event.id >> event.type >> event.data >> event.timestamp;
    argument.endStructure();
    return argument;
}

void registerMenuTypes() {
    qDBusRegisterMetaType<MenuLayoutItem>();
    qDBusRegisterMetaType<MenuItemProperties>();
    qDBusRegisterMetaType<QList<MenuItemProperties>>();
    qDBusRegisterMetaType<MenuItemKeys>();
    qDBusRegisterMetaType<QList<MenuItemKeys>>();
    qDBusRegisterMetaType<MenuEvent>();
    qDBusRegisterMetaType<QList<MenuEvent>>();
    qDBusRegisterMetaType<MenuShortcut>();
}

} // namespace kivo

#include "KivoMenuBar/DBusMenuAdaptor.h"

#include "KivoMenuBar/DBusMenu.h"

#include <QGuiApplication>
#include <QSet>

namespace kivo {
namespace {

constexpr int root = 0;

/// In their order. Who names an entry a million times would be answered with more than the bus
/// takes, which ends the connection of whoever sends it.
QList<int> eachOnce(const QList<int>& ids) {
    QSet<int> found;
    QList<int> result;
    for (const int id : ids) {
        if (found.contains(id)) continue;
        found.insert(id);
        result.append(id);
    }
    return result;
}

} // namespace

DBusMenuAdaptor::DBusMenuAdaptor(QObject* exported, DBusMenu& owner)
    : QDBusAbstractAdaptor(exported), menu(owner) {}

QString DBusMenuAdaptor::textDirection() const {
    return QGuiApplication::isRightToLeft() ? QStringLiteral("rtl") : QStringLiteral("ltr");
}

uint DBusMenuAdaptor::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                                MenuLayoutItem& layout) {
    layout = menu.layout(parentId, recursionDepth, propertyNames);
    return menu.revision;
}

QList<MenuItemProperties> DBusMenuAdaptor::GetGroupProperties(const QList<int>& ids,
                                                              const QStringList& propertyNames) {
    QList<MenuItemProperties> result;
    // No ids mean all items.
    QList<int> wanted = eachOnce(ids);
    if (wanted.isEmpty()) {
        wanted.append(root);
        // The list grows while it is walked.
        for (qsizetype at = 0; at < wanted.size(); ++at)
            for (const int child : menu.children(wanted[at]))
                wanted.append(child);
    }
    for (const int id : wanted)
        if (menu.isKnown(id)) result.append({id, menu.properties(id, propertyNames)});
    return result;
}

QDBusVariant DBusMenuAdaptor::GetProperty(int id, const QString& name) {
    const QVariant value = menu.properties(id, {name}).value(name);
    return QDBusVariant(value.isValid() ? value : QString());
}

void DBusMenuAdaptor::Event(int id, const QString& eventId, const QDBusVariant&, uint) {
    if (eventId == QLatin1String("clicked")) menu.click(id);
}

QList<int> DBusMenuAdaptor::EventGroup(const QList<MenuEvent>& events) {
    QList<int> unknown;
    for (const MenuEvent& event : events) {
        if (!menu.isKnown(event.id))
            unknown.append(event.id);
        else
            Event(event.id, event.type, event.data, event.timestamp);
    }
    return eachOnce(unknown);
}

bool DBusMenuAdaptor::AboutToShow(int id) {
    if (menu.children(id).empty() && id != root) return false;
    emit menu.aboutToShow();
    return menu.rebuild();
}

QList<int> DBusMenuAdaptor::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors) {
    QList<int> updated;
    for (const int id : eachOnce(ids)) {
        if (!menu.isKnown(id))
            idErrors.append(id);
        else if (AboutToShow(id))
            updated.append(id);
    }
    return updated;
}

} // namespace kivo

#include "moc_DBusMenuAdaptor.cpp"

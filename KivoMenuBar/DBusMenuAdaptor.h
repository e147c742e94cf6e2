#pragma once

#include "DBusMenuTypes.h"

#include <QDBusAbstractAdaptor>

namespace kivo {

class DBusMenu;

/// The menu as the bus sees it: names and types are the protocol's. GTK hosts send clicks through
/// the group calls alone.
class DBusMenuAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version)
    Q_PROPERTY(QString TextDirection READ textDirection)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath)
  public:
    DBusMenuAdaptor(QObject* exported, DBusMenu& owner);

    uint version() const { return 3; }
    QString textDirection() const;
    QString status() const { return QStringLiteral("normal"); }
    QStringList iconThemePath() const { return {}; }

    // NOLINTBEGIN(readability-identifier-naming): the protocol's names
  public slots:
    uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                   kivo::MenuLayoutItem& layout);
    kivo::MenuItemPropertiesList GetGroupProperties(const QList<int>& ids,
                                                    const QStringList& propertyNames);
    QDBusVariant GetProperty(int id, const QString& name);
    void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
    QList<int> EventGroup(const kivo::MenuEvents& events);
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

  signals:
    void ItemsPropertiesUpdated(const kivo::MenuItemPropertiesList& updated,
                                const kivo::MenuItemKeysList& removed);
    void LayoutUpdated(uint revision, int parent);
    void ItemActivationRequested(int id, uint timestamp);
    // NOLINTEND(readability-identifier-naming)

  private:
    DBusMenu& menu;
};

} // namespace kivo

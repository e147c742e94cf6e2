#pragma once

#include "KivoMenuBar/DBusMenuTypes.h"

#include <QDBusAbstractAdaptor>

namespace kivo {

class DBusMenu;

/// The menu as the bus sees it: names and types are the protocol's, and lists are spelt out, as the
/// bus knows types by their spelling. GTK hosts send clicks through the group calls alone.
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
    QList<kivo::MenuItemProperties> GetGroupProperties(const QList<int>& ids,
                                                       const QStringList& propertyNames);
    QDBusVariant GetProperty(int id, const QString& name);
    void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
    QList<int> EventGroup(const QList<kivo::MenuEvent>& events);
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

  signals:
    void ItemsPropertiesUpdated(const QList<kivo::MenuItemProperties>& updated,
                                const QList<kivo::MenuItemKeys>& removed);
    void LayoutUpdated(uint revision, int parent);
    void ItemActivationRequested(int id, uint timestamp);
    // NOLINTEND(readability-identifier-naming)

  private:
    DBusMenu& menu;
};

} // namespace kivo

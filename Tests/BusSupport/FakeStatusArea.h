#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QString>
#include <QStringList>

namespace tokwatch::testing {

/// A status area on a bus: the watcher that items register with, and the host that shows them.
class FakeStatusArea final : public QDBusVirtualObject {
  public:
    /// Nothing is there before `appear`.
    explicit FakeStatusArea(QDBusConnection bus);
    ~FakeStatusArea() override;

    void appear();
    void vanish();
    /// Another host of the same watcher comes or goes.
    void addHost(const QString& suffix);
    void removeHost(const QString& suffix);

    /// A property of the item that came first, and a call to it.
    QVariant shown(const QString& property);
    QDBusMessage call(const QString& member, const QVariantList& arguments);

    bool hasHost = true;    ///< what the watcher says about hosts
    int refusals = 0;       ///< how many of the next registrations fail
    int calls = 0;          ///< registrations tried
    QStringList registered; ///< the items, as they named themselves

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
    QString introspect(const QString&) const override { return {}; }

  private:
    QDBusConnection bus;
};

} // namespace tokwatch::testing

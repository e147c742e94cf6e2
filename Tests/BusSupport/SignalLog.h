#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QStringList>

namespace tokwatch::testing {

/// The signals of one interface as another program on the bus hears them.
class SignalLog : public QObject {
    Q_OBJECT
  public:
    SignalLog(QDBusConnection bus, const QString& interface);

    /// The names of those that `sender` sent since the last call, in order.
    QStringList take(QDBusConnection sender);

  private slots:
    void heard(const QDBusMessage& signal);

  private:
    QDBusConnection bus;
    QStringList members;
};

} // namespace tokwatch::testing

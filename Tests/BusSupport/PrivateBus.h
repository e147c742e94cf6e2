#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>

namespace tokwatch::testing {

/// A message bus of the test's own.
class PrivateBus {
  public:
    PrivateBus();
    ~PrivateBus();

    QDBusConnection connect(const QString& name);
    const QString& address() const { return busAddress; }
    /// Ends the bus while its clients are connected.
    void close();

  private:
    QProcess daemon;
    QString busAddress;
    QStringList names;
};

/// Runs the event loop until the condition holds; false when it never does.
bool until(const std::function<bool()>& condition);

/// A call to the bus and back: the bus has passed on what was sent on this connection, and what it
/// had passed to this connection is delivered.
void drain(QDBusConnection bus);

/// The answer of an object that lives in this thread too, which must not be waited for without an
/// event loop.
QDBusMessage answer(QDBusConnection bus, const QString& service, const QString& path,
                    const QString& interface, const QString& member,
                    const QVariantList& arguments = {});

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

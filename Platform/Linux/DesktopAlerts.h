#pragma once

#include "Platform/Seams/AlertDisplay.h"

#include <QDBusConnection>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QObject>

#include <chrono>
#include <functional>
#include <map>
#include <string>

namespace tokwatch {

/// Alerts through the desktop's notification service, org.freedesktop.Notifications (its
/// protocol, version 1.2). Every call is asynchronous; one that is not answered within
/// the patience is given up, and its alert cannot be replaced or clicked. Until then the next of
/// the same subject waits, as only the answer tells what it replaces. Where there is no bus or no
/// service, there is silence. Main thread only.
class DesktopAlerts : public QObject, public AlertDisplay {
    Q_OBJECT
  public:
    static constexpr const char* serviceName = "org.freedesktop.Notifications"; ///< and interface
    static constexpr const char* objectPath = "/org/freedesktop/Notifications";
    /// A desktop that has just begun is slow.
    static constexpr std::chrono::milliseconds patience = std::chrono::seconds{25};

    explicit DesktopAlerts(QDBusConnection session);

    /// The service runs, or the bus starts it when it is asked.
    bool isThere() const override { return !owner.isEmpty() || isStartable; }
    void show(const Alert& alert) override;
    void withdraw(const std::string& subject) override;
    /// Handles are "BUS OWNER NUMBER": a bus is told apart by its id, as each has owners of the
    /// same names; what another owner numbered counts as gone.
    void takeOver(const std::string& subject, const std::string& handle) override;

  private slots:
    void actionInvoked(uint id, const QString& action);
    void activationTokenGiven(uint id, const QString& token);
    void notificationClosed(uint id, uint reason);

  private:
    void lookForService();
    void change(const std::function<void()>& presence);
    void notify(const Alert& alert);
    void answered(const std::string& subject, const QDBusPendingReply<uint>& number);
    bool isOurs(uint id) const;
    /// "BUS OWNER ": what the present owner's handles begin with.
    std::string place() const;

    QDBusConnection bus;
    QDBusServiceWatcher watcher;
    QString busId;
    QString owner; ///< the connection of the service that runs; empty where none does
    bool isStartable = false;
    std::map<std::string, uint> shown; ///< the numbers that this owner gave, by subject
    /// What is to be done about the subjects whose number is not known yet, once it is.
    std::map<std::string, std::function<void()>> asked;
    std::string token; ///< for the click that comes next
};

} // namespace tokwatch

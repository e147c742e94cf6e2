#pragma once

#include "Platform/Seams/SystemNotifications.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>

#include <functional>
#include <vector>

namespace tokwatch {

/// The application on the desktop's buses: one instance a session, the refresh notification,
/// the end of sleep and a changed time zone. Where there is no bus, nothing is heard and everything
/// else works. Main thread only.
class DesktopBus : public QObject, public SystemNotifications, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "app.tokwatch")
  public:
    /// Also the interface, and the name of the desktop's entries: the application's id.
    static constexpr const char* serviceName = "app.tokwatch";
    static constexpr const char* objectPath = "/app/tokwatch";
    static constexpr const char* refreshMember = "refresh";

    /// Listens on the session bus for refreshes and on the system bus for the rest. A
    /// missing session bus is one line in the log.
    DesktopBus(QDBusConnection session, QDBusConnection system);

    const QDBusConnection& sessionBus() const { return session; }

    void onRefreshRequest(std::function<void()> call) override;
    void onResume(std::function<void()> call) override;
    void onTimeZoneChange(std::function<void()> call) override;
    /// As NetworkManager or systemd-networkd tell it.
    void onNetworkBack(std::function<void()> call) override;

    enum class Claim {
        first,  ///< this is the session's one instance; others' Open arrives here
        second, ///< another instance is running
        noBus,  ///< nobody can tell
    };
    /// Makes this the session's one instance, unless there is one, which is never replaced.
    Claim claim(std::function<void()> open);

    enum class Opening {
        shown,      ///< it has shown itself
        claimed,    ///< it was just ending, and this is the session's one instance now
        unanswered, ///< it has the name and does not answer, for longer than it may take to end
    };
    /// After a claim that came second: has the other instance show itself, or takes its place.
    Opening openRunning();

    /// Leaves the place to whoever starts next, and hears no more Open. The first thing that an
    /// instance does that ends: its last works may take a while.
    void release();

    /// Posts "app.tokwatch.refresh"; false without a session bus.
    static bool postRefresh(QDBusConnection session);

  public slots:
    /// Shows the application, or fails where it has been told to end. Called over the bus.
    Q_SCRIPTABLE void Open(); // NOLINT(readability-identifier-naming): the bus's convention

  private slots:
    void refreshPosted();
    void preparingForSleep(bool begins);
    void timePropertiesChanged(const QString& interface);
    void networkManagerChanged(uint state);
    void networkdChanged(const QString& interface, const QVariantMap& changed);

  private:
    QDBusConnection session;
    QDBusConnection system;
    std::vector<std::function<void()>> refreshCalls;
    std::vector<std::function<void()>> resumeCalls;
    std::vector<std::function<void()>> timeZoneCalls;
    std::vector<std::function<void()>> networkCalls;
    std::function<void()> openCall;
};

} // namespace tokwatch

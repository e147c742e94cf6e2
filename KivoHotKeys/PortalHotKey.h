#pragma once

#include "KivoHotKeys/GlobalHotKey.h"
#include "KivoHotKeys/PortalRequest.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QTimer>
#include <QVariantMap>

#include <chrono>
#include <optional>

namespace kivo {

/// A hot key that the desktop portal keeps for us. The desktop has the last word about it: it may
/// ask its user, and give the action another key than we prefer.
class PortalHotKey final : public GlobalHotKey {
    Q_OBJECT
  public:
    PortalHotKey(QDBusConnection session, Action action);
    ~PortalHotKey() override;

    void bind(const HotKey& key) override;
    void release() override;
    void setPaused(bool /*isPaused*/) override {}
    void look() override;
    QString trigger() const override { return boundTrigger; }

  private slots:
    void activated(const QDBusObjectPath& session, const QString& id, qulonglong time,
                   const QVariantMap& options);
    void shortcutsChanged(const QDBusMessage& told);
    void sessionClosed(const QDBusMessage& told);

  private:
    static constexpr std::chrono::seconds firstPause{5};
    static constexpr std::chrono::seconds longestPause{320};
    using Step = void (PortalHotKey::*)(const PortalRequest::Answer& answer);

    void ask(const char* method, const QVariantList& arguments, const QVariantMap& options,
             PortalRequest::Asks asks, Step next);
    void endRequest();
    void sessionMade(const PortalRequest::Answer& answer);
    void shortcutsBound(const PortalRequest::Answer& answer);
    void portalChanged(const QString& before, const QString& now);
    /// Ends a session, which may be none.
    void forget(QString& session);
    void fail(PortalRequest::Answer::Kind kind);

    QDBusConnection bus;
    Action action;
    QDBusServiceWatcher watcher;
    std::optional<HotKey> wanted; ///< while it is asked for
    QString session;              ///< of the bound key; empty without one
    QString nextSession;          ///< of the wanted one
    QString boundTrigger;
    std::chrono::seconds pause = firstPause; ///< until a silent portal is asked again
    QTimer retry;
    bool hasCome = false; ///< a portal, while it was asked, maybe too late for the question
    PortalRequest* request = nullptr; ///< under way, or the last one
};

} // namespace kivo

#pragma once

#include <QDBusConnection>
#include <QHash>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

#include <chrono>
#include <functional>

class QDBusError;
class QDBusMessage;

namespace kivo {

/// One question to the desktop portal's hot keys (org.freedesktop.portal.GlobalShortcuts, version
/// 1), whose answer comes as a signal of its own (org.freedesktop.portal.Request). Asked when it is
/// made, answered once, after silence maybe once more, and never waited for. Main thread only.
class PortalRequest : public QObject {
    Q_OBJECT
  public:
    static constexpr const char* service = "org.freedesktop.portal.Desktop";
    static constexpr const char* path = "/org/freedesktop/portal/desktop";
    static constexpr const char* interface = "org.freedesktop.portal.GlobalShortcuts";
    /// How long a portal may think before it counts as silent.
    static constexpr std::chrono::milliseconds patience{1000};

    struct Answer {
        enum class Kind { done, refused, silent, unsupported };
        Kind kind = Kind::done;
        QVariantMap results; ///< where it is done
    };
    enum class Asks { portal, user }; ///< a user may think as long as they like

    struct Question {
        const char* method;
        QVariantList arguments; ///< without the options, which come last
        QVariantMap options;
        Asks asks = Asks::portal;
    };

    PortalRequest(QDBusConnection bus, Question question, std::function<void(const Answer&)> done,
                  QObject* parent);
    ~PortalRequest() override;

    /// Whatever is answered, nobody wants to hear it; a portal that asks its user stops that.
    void forget();

    static Answer::Kind kindOf(const QDBusError& error);

  private slots:
    void responded(uint response, const QVariantMap& results, const QDBusMessage& message);

  private:
    void accepted(const QString& by);
    void finish(const Answer& answer);
    void close();

    QDBusConnection bus;
    QString handle;
    QString portal;                 ///< its unique name; empty until it has accepted the question
    QHash<QString, Answer> tooSoon; ///< what was heard until then, by its sender's unique name
    std::function<void(const Answer&)> done;
    bool wasSilent = false;
};

/// A name for something that a portal makes for us, which is part of its path; another one each
/// time.
QString portalToken();

/// Where a portal makes the "request" or "session" of such a name for who asks by that connection's
/// unique name. Known beforehand, so that no answer comes too soon, and no object too late.
QString portalObject(const char* kind, const QString& sender, const QString& token);

} // namespace kivo

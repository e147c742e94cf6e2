#include "KivoHotKeys/PortalRequest.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QTimer>

#include <utility>

namespace kivo {
namespace {

constexpr const char* requestInterface = "org.freedesktop.portal.Request";

} // namespace

QString portalObject(const char* kind, const QString& sender, const QString& token) {
    return QLatin1String(PortalRequest::path) + u'/' + QLatin1String(kind) + u'/' +
           QString(sender).remove(u':').replace(u'.', u'_') + u'/' + token;
}

QString portalToken() {
    static int count = 0;
    return QStringLiteral("kivo%1").arg(++count);
}

PortalRequest::PortalRequest(QDBusConnection session, Question question,
                             std::function<void(const Answer&)> whenDone, QObject* parent)
    : QObject(parent), bus(std::move(session)), done(std::move(whenDone)) {
    const QString token = portalToken();
    handle = portalObject("request", bus.baseService(), token);
    // From anybody, and the sender is looked at here: asked for the portal alone, the toolkit drops
    // what a portal says within moments of its start, before it has noted the name's new owner.
    bus.connect({}, handle, requestInterface, QStringLiteral("Response"), this,
                SLOT(responded(uint, QVariantMap, QDBusMessage)));
    question.options.insert(QStringLiteral("handle_token"), token);
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, question.method);
    call.setArguments(question.arguments << question.options);
    auto* calling =
        new QDBusPendingCallWatcher(bus.asyncCall(call, static_cast<int>(patience.count())), this);
    connect(calling, &QDBusPendingCallWatcher::finished, this, [this, calling] {
        if (calling->isError()) return finish({kindOf(calling->error()), {}});
        accepted(calling->reply().service());
    });
    if (question.asks == Asks::portal)
        QTimer::singleShot(patience, this, [this] { finish({Answer::Kind::silent, {}}); });
}

PortalRequest::~PortalRequest() {
    bus.disconnect({}, handle, requestInterface, QStringLiteral("Response"), this,
                   SLOT(responded(uint, QVariantMap, QDBusMessage)));
}

PortalRequest::Answer::Kind PortalRequest::kindOf(const QDBusError& error) {
    switch (error.type()) {
    case QDBusError::NoReply:
    case QDBusError::Timeout:
    case QDBusError::TimedOut:
        return Answer::Kind::silent;
    case QDBusError::AccessDenied:
        return Answer::Kind::refused;
    default:
        return Answer::Kind::unsupported;
    }
}

void PortalRequest::forget() {
    if (std::exchange(done, nullptr) && !wasSilent) close();
}

/// What a portal makes for a question that is closed it drops, unless it was done with it already.
void PortalRequest::close() {
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, handle, requestInterface, QStringLiteral("Close"));
    call.setAutoStartService(false);
    bus.send(call);
}

void PortalRequest::responded(uint response, const QVariantMap& results,
                              const QDBusMessage& message) {
    constexpr uint success = 0;
    const Answer answer{response == success ? Answer::Kind::done : Answer::Kind::refused, results};
    if (portal.isEmpty())
        tooSoon.insert(message.service(), answer);
    else if (message.service() == portal)
        finish(answer);
}

void PortalRequest::accepted(const QString& by) {
    portal = by;
    const auto early = std::exchange(tooSoon, {});
    if (const auto found = early.find(portal); found != early.end()) finish(*found);
}

void PortalRequest::finish(const Answer& answer) {
    const bool isSilent = answer.kind == Answer::Kind::silent;
    if (!done || (isSilent && std::exchange(wasSilent, true))) return;
    if (isSilent) close();
    const auto call = isSilent ? done : std::exchange(done, nullptr);
    call(answer);
}

} // namespace kivo

#include "moc_PortalRequest.cpp"

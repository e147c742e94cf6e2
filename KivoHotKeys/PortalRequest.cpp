#include "KivoHotKeys/PortalRequest.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QTimer>

#include <utility>

namespace kivo {
namespace {

constexpr const char* requestInterface = "org.freedesktop.portal.Request";

/// Known beforehand, so that no answer comes too soon to be heard.
QString handleOf(const QString& sender, const QString& token) {
    return QStringLiteral("/org/freedesktop/portal/desktop/request/") +
           QString(sender).remove(u':').replace(u'.', u'_') + u'/' + token;
}

} // namespace

QString portalToken() {
    static int count = 0;
    return QStringLiteral("kivo%1").arg(++count);
}

PortalRequest::PortalRequest(QDBusConnection session, Question question,
                             std::function<void(const Answer&)> whenDone, QObject* parent)
    : QObject(parent), bus(std::move(session)), done(std::move(whenDone)) {
    const QString token = portalToken();
    handle = handleOf(bus.baseService(), token);
    bus.connect(service, handle, requestInterface, QStringLiteral("Response"), this,
                SLOT(responded(uint, QVariantMap)));
    question.options.insert(QStringLiteral("handle_token"), token);
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, question.method);
    call.setArguments(question.arguments << question.options);
    auto* calling =
        new QDBusPendingCallWatcher(bus.asyncCall(call, static_cast<int>(patience.count())), this);
    connect(calling, &QDBusPendingCallWatcher::finished, this, [this, calling] {
        if (calling->isError()) finish({kindOf(calling->error()), {}});
    });
    if (question.asks == Asks::portal)
        QTimer::singleShot(patience, this, [this] { finish({Answer::Kind::silent, {}}); });
}

PortalRequest::~PortalRequest() {
    bus.disconnect(service, handle, requestInterface, QStringLiteral("Response"), this,
                   SLOT(responded(uint, QVariantMap)));
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

void PortalRequest::responded(uint response, const QVariantMap& results) {
    constexpr uint success = 0;
    finish({response == success ? Answer::Kind::done : Answer::Kind::refused, results});
}

void PortalRequest::finish(Answer answer) {
    if (const auto call = std::exchange(done, nullptr)) call(answer);
}

} // namespace kivo

#include "moc_PortalRequest.cpp"

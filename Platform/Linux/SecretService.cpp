#include "Platform/Linux/SecretService.h"

#include "TokwatchCore/Limits/CredentialSource.h"

#include <QCoroDBusPendingCall>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QScopeGuard>

#include <algorithm>
#include <array>

namespace tokwatch {
namespace {

constexpr int callMilliseconds = 5000;

constexpr const char* rootPath = "/org/freedesktop/secrets";
constexpr const char* rootInterface = "org.freedesktop.Secret.Service";
constexpr const char* itemInterface = "org.freedesktop.Secret.Item";
constexpr const char* promptInterface = "org.freedesktop.Secret.Prompt";
constexpr const char* sessionInterface = "org.freedesktop.Secret.Session";

using Attributes = QMap<QString, QString>;
using ObjectPaths = QList<QDBusObjectPath>;

QDBusMessage methodCall(const QString& path, const char* interface, const char* method,
                        const QVariantList& arguments) {
    QDBusMessage message =
        QDBusMessage::createMethodCall("org.freedesktop.secrets", path, interface, method);
    message.setArguments(arguments);
    return message;
}

/// A service that is not there, or does not answer, holds nothing for us.
CredentialError::Reason reasonOf(const QString& errorName) {
    constexpr std::array refusals{"org.freedesktop.DBus.Error.AccessDenied",
                                  "org.freedesktop.Secret.Error.IsLocked"};
    const bool isRefusal = std::ranges::any_of(
        refusals, [&](const char* name) { return errorName == QLatin1String(name); });
    return isRefusal ? CredentialError::denied : CredentialError::notFound;
}

/// The reply's arguments, which have the types of `signature`.
QCoro::Task<QVariantList> call(QDBusConnection bus, QDBusMessage message, QString signature) {
    const QDBusPendingCall pending = bus.asyncCall(message, callMilliseconds);
    const QDBusMessage reply = co_await pending;
    if (reply.type() == QDBusMessage::ErrorMessage)
        throw CredentialError(reasonOf(reply.errorName()));
    if (reply.signature() != signature) throw CredentialError(CredentialError::malformed);
    QVariantList arguments = reply.arguments();
    co_return arguments;
}

/// Unlocks an item where that takes no question to the user.
QCoro::Task<> unlock(QDBusConnection bus, QDBusObjectPath item) {
    const QVariantList arguments{QVariant::fromValue(ObjectPaths{item})};
    const QDBusMessage message = methodCall(rootPath, rootInterface, "Unlock", arguments);
    const QVariantList reply = co_await call(bus, message, "aoo");
    const QString prompt = reply[1].value<QDBusObjectPath>().path();
    if (prompt == "/") co_return;
    bus.send(methodCall(prompt, promptInterface, "Dismiss", {}));
    throw CredentialError(CredentialError::denied);
}

/// The item with this attribute, unlocked; an empty path when there is none.
QCoro::Task<QDBusObjectPath> findItem(QDBusConnection bus, QString key, QString value) {
    const Attributes attributes{{key, value}};
    const QVariantList arguments{QVariant::fromValue(attributes)};
    const QDBusMessage message = methodCall(rootPath, rootInterface, "SearchItems", arguments);
    const QVariantList reply = co_await call(bus, message, "aoao");
    const auto unlocked = qdbus_cast<ObjectPaths>(reply[0]);
    const auto locked = qdbus_cast<ObjectPaths>(reply[1]);
    QDBusObjectPath item;
    if (!unlocked.isEmpty()) {
        item = unlocked.first();
    } else if (!locked.isEmpty()) {
        item = locked.first();
        co_await unlock(bus, item);
    }
    co_return item;
}

/// Asks for the item's secret over a session without encryption: the bus is local and private.
QCoro::Task<std::string> readItem(QDBusConnection bus, QDBusObjectPath item) {
    const QVariantList method{"plain", QVariant::fromValue(QDBusVariant(QString()))};
    const QDBusMessage open = methodCall(rootPath, rootInterface, "OpenSession", method);
    const QVariantList opened = co_await call(bus, open, "vo");
    const auto session = opened[1].value<QDBusObjectPath>();

    // However the call ends, the service must not keep the session until this process does.
    const auto close =
        qScopeGuard([&] { bus.send(methodCall(session.path(), sessionInterface, "Close", {})); });

    const QVariantList arguments{QVariant::fromValue(session)};
    const QDBusMessage get = methodCall(item.path(), itemInterface, "GetSecret", arguments);
    const QVariantList reply = co_await call(bus, get, "(oayays)");

    const auto secret = reply[0].value<QDBusArgument>();
    QDBusObjectPath sameSession;
    QByteArray parameters;
    QByteArray value;
    secret.beginStructure();
    secret >> sameSession >> parameters >> value;
    secret.endStructure();
    std::string password = value.toStdString();
    co_return password;
}

} // namespace

SecretService::SecretService(std::function<QDBusConnection()> bus) : connect(std::move(bus)) {}

QCoro::Task<std::string> SecretService::secret(std::string service) const {
    qDBusRegisterMetaType<Attributes>();
    const QDBusConnection bus = connect();
    if (!bus.isConnected()) throw CredentialError(CredentialError::notFound);

    const QString value = QString::fromStdString(service);
    const QStringList keys{"service", "label"};
    for (const QString& key : keys) {
        const QDBusObjectPath item = co_await findItem(bus, key, value);
        if (item.path().isEmpty()) continue;
        std::string text = co_await readItem(bus, item);
        co_return text;
    }
    throw CredentialError(CredentialError::notFound);
}

} // namespace tokwatch

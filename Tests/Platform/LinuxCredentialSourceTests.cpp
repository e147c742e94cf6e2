#include "Platform/Linux/LinuxCredentialSource.h"

#include "Tests/BusSupport/PrivateBus.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/WaitFor.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>

#include <gmock/gmock.h>

#include <optional>

namespace tokwatch {

namespace {

using ObjectPaths = QList<QDBusObjectPath>;

class FakeSecretService final : public QDBusVirtualObject {
  public:
    std::optional<QByteArray> secret;
    QString attribute = "service";
    bool isLocked = false;
    bool unlocksSilently = false;
    QString refusal; ///< the error that these calls get
    QString refused; ///< their name; every call's by default
    QStringList calls;

    explicit FakeSecretService(QDBusConnection connection) : bus(connection) {
        bus.registerVirtualObject("/", this, QDBusConnection::SubPath);
        bus.registerService("org.freedesktop.secrets");
    }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        calls.append(message.member());
        const bool isRefused = !refusal.isEmpty() && message.member().startsWith(refused);
        connection.send(isRefused ? message.createErrorReply(refusal, "refused") : reply(message));
        return true;
    }

  private:
    static QDBusArgument onTheWire(const QDBusObjectPath& session, const QByteArray& secret) {
        QDBusArgument argument;
        argument.beginStructure();
        argument << session << QByteArray() << secret << QString("text/plain");
        argument.endStructure();
        return argument;
    }
    QDBusMessage reply(const QDBusMessage& message) {
        const QString member = message.member();
        const QDBusObjectPath session("/session");
        const ObjectPaths none;
        const ObjectPaths item{QDBusObjectPath("/item")};
        if (member == "OpenSession")
            return message.createReply(
                {QVariant::fromValue(QDBusVariant(QString())), QVariant::fromValue(session)});
        if (member == "SearchItems") {
            const auto wanted = qdbus_cast<QMap<QString, QString>>(message.arguments().at(0));
            const bool isFound = secret && wanted.value(attribute) == "Claude Code-credentials";
            return message.createReply({QVariant::fromValue(isFound && !isLocked ? item : none),
                                        QVariant::fromValue(isFound && isLocked ? item : none)});
        }
        if (member == "Unlock")
            return message.createReply(
                {QVariant::fromValue(unlocksSilently ? item : none),
                 QVariant::fromValue(QDBusObjectPath(unlocksSilently ? "/" : "/prompt"))});
        if (member == "GetSecret")
            return message.createReply(QVariant::fromValue(onTheWire(session, *secret)));
        return message.createReply();
    }

    QDBusConnection bus;
};

struct LinuxCredentials : ::testing::Test {
    testing::TemporaryDirectory home;
    testing::PrivateBus bus;

    LinuxCredentials() {
        testing::needEventLoop();
        qDBusRegisterMetaType<QMap<QString, QString>>();
    }

    std::string read(const std::string& service = "Claude Code-credentials") {
        LinuxCredentialSource source(home.path(),
                                     SecretService([this] { return bus.connect("client"); }));
        return testing::waitFor(source.keychainSecret(service));
    }
    std::optional<CredentialError::Reason> failure() {
        try {
            read();
        } catch (const CredentialError& error) {
            return error.reason;
        }
        return std::nullopt;
    }
};

TEST_F(LinuxCredentials, AreClaudeCodesFileFirst) {
    FakeSecretService service(bus.connect("service"));
    service.secret = "from the service";
    EXPECT_EQ(read(), "from the service");
    home.write(".claude/.credentials.json", "{}\n");
    EXPECT_EQ(read(), "{}\n");
    home.write(".claude/.credentials.json", "\xff");
    EXPECT_EQ(failure(), CredentialError::malformed);
    std::filesystem::remove(home / ".claude/.credentials.json");
    std::filesystem::create_directory(home / ".claude/.credentials.json");
    EXPECT_EQ(failure(), CredentialError::denied);
}

TEST_F(LinuxCredentials, AreFoundByServiceOrLabel) {
    FakeSecretService service(bus.connect("service"));
    service.secret = "secret";
    service.attribute = "label";
    EXPECT_EQ(read(), "secret");
    service.refusal = "org.freedesktop.Secret.Error.IsLocked";
    service.refused = "GetSecret";
    EXPECT_EQ(failure(), CredentialError::denied);
    EXPECT_THROW(read("another service"), CredentialError); // after the sessions' ends
    EXPECT_EQ(service.calls.count("Close"), 2) << "the session is left open";
    service.refusal.clear();
    service.secret = "\xff\xfe";
    EXPECT_EQ(failure(), CredentialError::malformed);
}

TEST_F(LinuxCredentials, NeverMakeTheDesktopAsk) {
    FakeSecretService service(bus.connect("service"));
    service.secret = "secret";
    service.isLocked = true;
    EXPECT_EQ(failure(), CredentialError::denied);
    service.unlocksSilently = true;
    EXPECT_EQ(read(), "secret");
    EXPECT_EQ(service.calls.count("Dismiss"), 1);
    EXPECT_FALSE(service.calls.contains("Prompt"));
}

TEST_F(LinuxCredentials, AreNotFoundWithoutAServiceThatHasThem) {
    EXPECT_EQ(failure(), CredentialError::notFound);
    FakeSecretService service(bus.connect("service"));
    EXPECT_EQ(failure(), CredentialError::notFound);
    service.refusal = "org.freedesktop.Secret.Error.IsLocked";
    EXPECT_EQ(failure(), CredentialError::denied);
    service.refusal = "org.freedesktop.DBus.Error.Failed";
    EXPECT_EQ(failure(), CredentialError::notFound);
    LinuxCredentialSource unconnected(
        home.path(),
        SecretService([] { return QDBusConnection::connectToBus("unix:path=/none", "none"); }));
    EXPECT_THROW(testing::waitFor(unconnected.keychainSecret("any")), CredentialError);
}

} // namespace
} // namespace tokwatch

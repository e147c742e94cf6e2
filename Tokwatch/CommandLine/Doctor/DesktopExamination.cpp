#include "Tokwatch/CommandLine/Doctor/Examinations.h"

#include "Platform/Linux/DesktopAlerts.h"
#include "Platform/Linux/DesktopBus.h"
#include "TokwatchCore/Support/PlainText.h"

#include <QDBusMessage>
#include <QDBusVariant>

#include <optional>
#include <utility>

namespace tokwatch {
namespace {

constexpr int timeoutMilliseconds = 2000;

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* secretsName = "org.freedesktop.secrets";

class DesktopExamination {
  public:
    std::vector<Finding> run() {
        if (!bus.isConnected()) {
            add("Session bus", Health::note,
                "there is none: no status item, and refresh requests are not heard");
            return std::move(findings);
        }
        add("Session bus", Health::good, "is there");
        examineApplication();
        examineStatusArea();
        examineNotifications();
        examineSecretService();
        return std::move(findings);
    }

  private:
    void add(std::string topic, Health health, std::string text) {
        findings.push_back({std::move(topic), health, std::move(text)});
    }

    /// The first value of the reply; none on any error.
    std::optional<QVariant> ask(const char* service, const char* path, const char* interface,
                                const char* method, const QVariantList& arguments) const {
        QDBusMessage question = QDBusMessage::createMethodCall(service, path, interface, method);
        question.setArguments(arguments);
        // Nobody is to be started by an examination.
        question.setAutoStartService(false);
        const QDBusMessage reply = bus.call(question, QDBus::Block, timeoutMilliseconds);
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
            return std::nullopt;
        return reply.arguments().first();
    }

    std::optional<QVariant> askBus(const char* method, const QVariantList& arguments) const {
        return ask("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
                   arguments);
    }

    bool isOwned(const char* name) const {
        return askBus("NameHasOwner", {QString(name)}).value_or(false).toBool();
    }

    void examineApplication() {
        const auto process =
            askBus("GetConnectionUnixProcessID", {QString(DesktopBus::serviceName)});
        if (process)
            add("Application", Health::good,
                "runs, as process " + std::to_string(process->toUInt()));
        else
            add("Application", Health::note, "does not run");
    }

    void examineStatusArea() {
        if (!isOwned(watcherName)) {
            add("Status area", Health::note, "this desktop has none, or none that takes items");
            return;
        }
        const auto answer =
            ask(watcherName, "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties", "Get",
                {QString(watcherName), "IsStatusNotifierHostRegistered"});
        if (answer && answer->value<QDBusVariant>().variant().toBool())
            add("Status area", Health::good, "a panel shows status items");
        else
            add("Status area", Health::note, "items are collected, but no panel shows them");
    }

    bool isStartable(const char* name) const {
        return askBus("ListActivatableNames", {})
            .value_or(QVariant())
            .toStringList()
            .contains(name);
    }

    void examineNotifications() {
        using Alerts = DesktopAlerts;
        constexpr const char* topic = "Notifications";
        if (!isOwned(Alerts::serviceName)) {
            if (isStartable(Alerts::serviceName))
                add(topic, Health::good, "the service that shows them starts when it is asked");
            else
                add(topic, Health::note,
                    "no service of this desktop shows any: limits that run low are seen in the "
                    "status area alone");
            return;
        }
        const auto name = ask(Alerts::serviceName, Alerts::objectPath, Alerts::serviceName,
                              "GetServerInformation", {});
        if (name)
            add(topic, Health::good, plainText(name->toString().toStdString()) + " shows them");
        else
            add(topic, Health::bad, "the service that shows them does not answer");
    }

    void examineSecretService() {
        if (isOwned(secretsName)) {
            add("Secret Service", Health::good, "runs");
            return;
        }
        if (isStartable(secretsName))
            add("Secret Service", Health::good, "starts when it is asked");
        else
            add("Secret Service", Health::note,
                "there is none; Claude Code's login is found in its file only");
    }

    QDBusConnection bus = QDBusConnection::sessionBus();
    std::vector<Finding> findings;
};

} // namespace

std::vector<Finding> examineDesktop() {
    return DesktopExamination().run();
}

} // namespace tokwatch

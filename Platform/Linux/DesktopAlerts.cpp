#include "Platform/Linux/DesktopAlerts.h"

#include "Platform/Linux/DesktopBus.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include <algorithm>
#include <utility>

namespace tokwatch {
namespace {

constexpr const char* defaultAction = "default"; // a click on the notification itself

QDBusMessage callOf(const char* method) {
    return QDBusMessage::createMethodCall(DesktopAlerts::serviceName, DesktopAlerts::objectPath,
                                          DesktopAlerts::serviceName, method);
}

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

/// One byte, as services take it.
QVariant hintOf(Alert::Urgency urgency) {
    return QVariant::fromValue(static_cast<uchar>(urgency));
}

} // namespace

DesktopAlerts::DesktopAlerts(QDBusConnection session)
    : bus(std::move(session)), watcher(serviceName, bus, QDBusServiceWatcher::WatchForOwnerChange) {
    if (!bus.isConnected()) return;
    // What one service numbered, another knows nothing of, or worse, gave to somebody else.
    connect(&watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& next) {
                change([&] { owner = next; });
                shown.clear();
            });
    const auto listen = [this](const char* signal, const char* slot) {
        bus.connect(serviceName, objectPath, serviceName, signal, this, slot);
    };
    listen("ActionInvoked", SLOT(actionInvoked(uint, QString)));
    listen("ActivationToken", SLOT(activationTokenGiven(uint, QString)));
    listen("NotificationClosed", SLOT(notificationClosed(uint, uint)));
    lookForService();
}

void DesktopAlerts::lookForService() {
    const auto ask = [this](const char* question, const QVariantList& arguments, auto take) {
        QDBusMessage call = QDBusMessage::createMethodCall(
            "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", question);
        call.setArguments(arguments);
        auto* asking = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
        connect(asking, &QDBusPendingCallWatcher::finished, this, [this, asking, take] {
            asking->deleteLater();
            if (asking->isError()) return; // nobody has the name
            const QVariant answer = asking->reply().arguments().value(0);
            change([&] { take(answer); });
        });
    };
    // The answers come in this order: with the owner there is the bus that it is on.
    ask("GetId", {}, [this](const QVariant& answer) { busId = answer.toString(); });
    ask("GetNameOwner", {QString(serviceName)},
        [this](const QVariant& answer) { owner = answer.toString(); });
    ask("ListActivatableNames", {}, [this](const QVariant& answer) {
        isStartable = answer.toStringList().contains(serviceName);
    });
}

void DesktopAlerts::change(const std::function<void()>& presence) {
    const bool wasThere = isThere();
    presence();
    if (isThere() && !wasThere && onArrival) onArrival();
}

void DesktopAlerts::show(const Alert& alert) {
    if (!isThere()) return;
    if (const auto earlier = asked.find(alert.subject); earlier != asked.end())
        earlier->second = [this, alert] { show(alert); };
    else
        notify(alert);
}

void DesktopAlerts::notify(const Alert& alert) {
    asked[alert.subject] = nullptr;
    const auto before = shown.find(alert.subject);
    const QStringList actions =
        onOpen ? QStringList{defaultAction, QStringLiteral("Open Tokwatch")} : QStringList();
    // Of the desktop entry, the icon and the bus.
    const QString application = QString::fromLatin1(DesktopBus::serviceName);
    const QVariantMap hints{{QStringLiteral("urgency"), hintOf(alert.urgency)},
                            {QStringLiteral("desktop-entry"), application}};
    constexpr int asTheDesktopLikes = -1; // how long it stays
    QDBusMessage call = callOf("Notify");
    // Titles are plain text everywhere; texts are markup to most.
    call.setArguments({QStringLiteral("Tokwatch"), before == shown.end() ? 0u : before->second,
                       application, text(alert.title), text(alert.text).toHtmlEscaped(), actions,
                       hints, asTheDesktopLikes});
    auto* pending =
        new QDBusPendingCallWatcher(bus.asyncCall(call, static_cast<int>(patience.count())), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this,
            [this, pending, subject = alert.subject] {
                pending->deleteLater();
                answered(subject, *pending);
            });
}

void DesktopAlerts::answered(const std::string& subject, const QDBusPendingReply<uint>& number) {
    const auto next = asked.extract(subject);
    // An error is silence, as there would be without the service.
    if (!number.isError() && number.reply().service() == owner) {
        shown[subject] = number.value();
        if (onShown) onShown(subject, place() + std::to_string(number.value()));
    }
    if (next.mapped()) next.mapped()();
}

std::string DesktopAlerts::place() const {
    return (busId + ' ' + owner + ' ').toStdString();
}

void DesktopAlerts::takeOver(const std::string& subject, const std::string& handle) {
    const std::string here = place();
    if (busId.isEmpty() || owner.isEmpty() || !handle.starts_with(here)) return;
    const uint number = QString::fromStdString(handle.substr(here.size())).toUInt();
    if (number != 0) shown[subject] = number;
}

void DesktopAlerts::withdraw(const std::string& subject) {
    if (const auto earlier = asked.find(subject); earlier != asked.end()) {
        earlier->second = [this, subject] { withdraw(subject); };
        return;
    }
    const auto known = shown.find(subject);
    if (known == shown.end()) return;
    QDBusMessage call = callOf("CloseNotification");
    call.setArguments({known->second});
    call.setAutoStartService(false);
    bus.asyncCall(call, static_cast<int>(patience.count()));
    shown.erase(known);
}

bool DesktopAlerts::isOurs(uint id) const {
    return std::ranges::any_of(shown, [id](const auto& entry) { return entry.second == id; });
}

void DesktopAlerts::activationTokenGiven(uint id, const QString& given) {
    if (isOurs(id)) token = given.toStdString();
}

void DesktopAlerts::actionInvoked(uint id, const QString& action) {
    if (isOurs(id) && action == defaultAction && onOpen) onOpen(std::exchange(token, {}));
}

void DesktopAlerts::notificationClosed(uint id, uint /*reason*/) {
    std::erase_if(shown, [id](const auto& entry) { return entry.second == id; });
}

} // namespace tokwatch

#include "moc_DesktopAlerts.cpp"

#include "KivoHotKeys/PortalHotKey.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace kivo {

/// One entry of what is bound: "(sa{sv})".
struct PortalShortcut {
    QString id;
    QVariantMap properties;
};

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut) {
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut) {
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}
namespace {

using Kind = PortalRequest::Answer::Kind;

/// Portals tell the path of a session as a text; empty where it is no path.
QString sessionIn(const QVariantMap& results) {
    const QVariant handle = results.value(QStringLiteral("session_handle"));
    const QString path = handle.canConvert<QDBusObjectPath>()
                             ? handle.value<QDBusObjectPath>().path()
                             : handle.toString();
    static const QRegularExpression paths(QStringLiteral("^(/[A-Za-z0-9_]+)+$"));
    return paths.match(path).hasMatch() ? path : QString();
}

HotKeyState stateAfter(Kind kind) {
    switch (kind) {
    case Kind::done:
        return HotKeyState::bound;
    case Kind::refused:
        return HotKeyState::refused;
    case Kind::silent:
        return HotKeyState::silent;
    case Kind::unsupported:
        break;
    }
    return HotKeyState::unsupported;
}

/// The shortcut of that name among those that the portal lists; none where it left that out.
std::optional<PortalShortcut> shortcutIn(const QVariant& shortcuts, const QString& id) {
    const auto listed = shortcuts.value<QDBusArgument>();
    // Of any other shape the toolkit would read past its end.
    if (listed.currentSignature() != QLatin1String("a(sa{sv})")) return std::nullopt;
    const auto all = qdbus_cast<QList<PortalShortcut>>(listed);
    const auto found = std::ranges::find(all, id, &PortalShortcut::id);
    return found == all.end() ? std::nullopt : std::optional(*found);
}

QString triggerOf(const PortalShortcut& shortcut) {
    return shortcut.properties.value(QStringLiteral("trigger_description")).toString();
}

constexpr const char* sessionInterface = "org.freedesktop.portal.Session";

} // namespace

PortalHotKey::PortalHotKey(QDBusConnection sessionBus, Action what)
    : bus(std::move(sessionBus)), action(std::move(what)),
      watcher(PortalRequest::service, bus, QDBusServiceWatcher::WatchForOwnerChange) {
    // Slots with types that the toolkit does not know by name are connected without complaint, and
    // never called.
    qRegisterMetaType<QDBusObjectPath>();
    qDBusRegisterMetaType<PortalShortcut>();
    qDBusRegisterMetaType<QList<PortalShortcut>>();
    bus.connect(PortalRequest::service, PortalRequest::path, PortalRequest::interface,
                QStringLiteral("Activated"), this,
                SLOT(activated(QDBusObjectPath, QString, qulonglong, QVariantMap)));
    bus.connect(PortalRequest::service, PortalRequest::path, PortalRequest::interface,
                QStringLiteral("ShortcutsChanged"), this, SLOT(shortcutsChanged(QDBusMessage)));
    bus.connect(PortalRequest::service, {}, sessionInterface, QStringLiteral("Closed"), this,
                SLOT(sessionClosed(QDBusMessage)));
    connect(&watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString& before, const QString& now) {
                portalChanged(before, now);
            });
    retry.setSingleShot(true);
    connect(&retry, &QTimer::timeout, this, &PortalHotKey::arrived);
}

PortalHotKey::~PortalHotKey() {
    release();
}

void PortalHotKey::bind(const HotKey& key) {
    if (!bus.isConnected()) return emit settled(HotKeyState::unsupported);
    forget(nextSession);
    retry.stop();
    hasCome = false;
    wanted = key;
    const QString token = portalToken();
    // Also that of a portal which is too busy to tell of it is closed.
    nextSession = portalObject("session", bus.baseService(), token);
    ask("CreateSession", {}, {{QStringLiteral("session_handle_token"), token}},
        PortalRequest::Asks::portal, &PortalHotKey::sessionMade);
}

void PortalHotKey::ask(const char* method, const QVariantList& arguments,
                       const QVariantMap& options, PortalRequest::Asks asks, Step next) {
    endRequest();
    request = new PortalRequest(
        bus, {method, arguments, options, asks},
        [this, next](const PortalRequest::Answer& answer) {
            if (wanted) return (this->*next)(answer);
            QString late = sessionIn(answer.results);
            forget(late);
        },
        this);
}

/// Later: it may be its answer that ends it.
void PortalHotKey::endRequest() {
    if (request == nullptr) return;
    request->forget();
    std::exchange(request, nullptr)->deleteLater();
}

void PortalHotKey::sessionMade(const PortalRequest::Answer& answer) {
    if (answer.kind != Kind::done) return fail(answer.kind);
    nextSession = sessionIn(answer.results);
    if (nextSession.isEmpty()) return fail(Kind::refused);
    const QList<PortalShortcut> shortcuts{
        {action.id,
         {{QStringLiteral("description"), action.description},
          {QStringLiteral("preferred_trigger"), portalTrigger(*wanted)}}}};
    ask("BindShortcuts",
        {QVariant::fromValue(QDBusObjectPath(nextSession)), QVariant::fromValue(shortcuts),
         QString()},
        {}, PortalRequest::Asks::user, &PortalHotKey::shortcutsBound);
    emit settled(HotKeyState::waiting);
}

void PortalHotKey::shortcutsBound(const PortalRequest::Answer& answer) {
    if (answer.kind != Kind::done) return fail(answer.kind);
    const std::optional<PortalShortcut> shortcut =
        shortcutIn(answer.results.value(QStringLiteral("shortcuts")), action.id);
    if (!shortcut) return fail(Kind::refused);
    forget(session);
    session = std::exchange(nextSession, {});
    wanted.reset();
    pause = firstPause;
    boundTrigger = triggerOf(*shortcut);
    emit settled(HotKeyState::bound);
}

void PortalHotKey::fail(Kind kind) {
    forget(nextSession);
    wanted.reset();
    const bool wasTooLate = kind == Kind::unsupported && std::exchange(hasCome, false);
    emit settled(stateAfter(kind));
    if (wasTooLate) emit arrived();
    if (kind != Kind::silent || !session.isEmpty()) return;
    // It may only just be starting, as everything does at login.
    retry.start(pause);
    pause = std::min(pause * 2, longestPause);
}

void PortalHotKey::release() {
    retry.stop();
    endRequest();
    forget(nextSession);
    forget(session);
    wanted.reset();
    boundTrigger.clear();
}

void PortalHotKey::forget(QString& which) {
    if (which.isEmpty()) return;
    QDBusMessage call =
        QDBusMessage::createMethodCall(PortalRequest::service, std::exchange(which, {}),
                                       sessionInterface, QStringLiteral("Close"));
    call.setAutoStartService(false);
    bus.send(call);
}

void PortalHotKey::look() {
    if (!bus.isConnected()) return emit settled(HotKeyState::unsupported);
    QDBusMessage call = QDBusMessage::createMethodCall(
        PortalRequest::service, PortalRequest::path,
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call << QString(PortalRequest::interface) << QStringLiteral("version");
    auto* asking = new QDBusPendingCallWatcher(
        bus.asyncCall(call, static_cast<int>(PortalRequest::patience.count())), this);
    connect(asking, &QDBusPendingCallWatcher::finished, this, [this, asking] {
        asking->deleteLater();
        if (asking->isError() && !wanted && session.isEmpty())
            emit settled(stateAfter(PortalRequest::kindOf(asking->error())));
    });
}

void PortalHotKey::activated(const QDBusObjectPath& of, const QString& id, qulonglong /*time*/,
                             const QVariantMap& options) {
    if (of.path() == session && id == action.id)
        emit pressed(options.value(QStringLiteral("activation_token")).toString());
}

/// In the desktop's own settings.
void PortalHotKey::shortcutsChanged(const QDBusMessage& told) {
    const QVariantList arguments = told.arguments();
    if (arguments.size() != 2 || session.isEmpty() ||
        arguments[0].value<QDBusObjectPath>().path() != session)
        return;
    const std::optional<PortalShortcut> shortcut = shortcutIn(arguments[1], action.id);
    boundTrigger = shortcut ? triggerOf(*shortcut) : QString();
    if (!wanted) emit settled(shortcut ? HotKeyState::bound : HotKeyState::refused);
}

/// By the desktop or its user.
void PortalHotKey::sessionClosed(const QDBusMessage& told) {
    if (session.isEmpty() || told.path() != session) return;
    session.clear();
    boundTrigger.clear();
    if (!wanted) emit settled(HotKeyState::refused);
}

void PortalHotKey::portalChanged(const QString& before, const QString& now) {
    // Mostly started by our own question, which it will answer. Where it came by itself, a moment
    // after the question, that has failed, which is told after this.
    if (before.isEmpty() && wanted) {
        hasCome = true;
        return;
    }
    const bool isLoss = wanted || !session.isEmpty();
    session.clear(); // gone with the portal
    nextSession.clear();
    if (isLoss) fail(Kind::silent);
    if (!now.isEmpty()) emit arrived();
}

} // namespace kivo

#include "moc_PortalHotKey.cpp"

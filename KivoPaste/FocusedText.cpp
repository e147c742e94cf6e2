#include "KivoPaste/FocusedText.h"

#include "Platform/System/MuteBus.h"

#include <QCoroDBusPendingCall>
#include <QCoroFuture>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QDeadlineTimer>
#include <QPromise>
#include <QScopeGuard>
#include <QThreadPool>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace kivo {
namespace {

constexpr std::chrono::milliseconds callTime{200};
constexpr std::chrono::milliseconds searchTime{600};
/// Windows have some hundred objects; documents and sheets in them more than anybody looks through.
constexpr std::size_t mostObjects = 3000;

constexpr const char* accessibleInterface = "org.a11y.atspi.Accessible";
constexpr const char* textInterface = "org.a11y.atspi.Text";
constexpr const char* editableInterface = "org.a11y.atspi.EditableText";

// The protocol's numbers, of states by their bits.
constexpr int isActive = 1;
constexpr int isEditable = 7;
constexpr int isFocused = 12;
constexpr int isShowing = 25;
constexpr uint terminalRole = 60;

/// What an application tells of itself: a window, a part of it, or the application.
struct Accessible {
    QString service;
    QString path;
    quint64 states = 0;

    bool has(int state) const { return (states >> state & 1U) != 0; }
};

QDBusPendingCall ask(const QDBusConnection& bus, const Accessible& whom, const char* interface,
                     const char* method, const QVariantList& arguments = {}) {
    QDBusMessage call = QDBusMessage::createMethodCall(whom.service, whom.path, interface, method);
    call.setArguments(arguments);
    call.setAutoStartService(false);
    return bus.asyncCall(call, static_cast<int>(callTime.count()));
}

void appendChildren(const QDBusMessage& reply, std::vector<Accessible>& children) {
    if (reply.signature() != QLatin1String("a(so)")) return;
    const auto list = reply.arguments().constFirst().value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        Accessible child;
        QDBusObjectPath path;
        list.beginStructure();
        list >> child.service >> path;
        list.endStructure();
        child.path = path.path();
        if (children.size() < mostObjects) children.push_back(std::move(child));
    }
    list.endArray();
}

quint64 statesIn(const QDBusMessage& reply) {
    if (reply.signature() != QLatin1String("au")) return 0;
    const auto words = qdbus_cast<QList<uint>>(reply.arguments().constFirst());
    return words.value(0) | static_cast<quint64>(words.value(1)) << 32U;
}

/// All children of all these with their states. They are asked at once; who does not answer has
/// none.
QCoro::Task<std::vector<Accessible>> childrenOf(QDBusConnection bus,
                                                std::vector<Accessible> parents) {
    std::vector<QDBusPendingCall> questions;
    for (const Accessible& parent : parents)
        questions.push_back(ask(bus, parent, accessibleInterface, "GetChildren"));
    std::vector<Accessible> children;
    for (const QDBusPendingCall& question : questions) {
        const QDBusMessage reply = co_await question;
        appendChildren(reply, children);
    }
    questions.clear();
    for (const Accessible& child : children)
        questions.push_back(ask(bus, child, accessibleInterface, "GetState"));
    for (std::size_t i = 0; i < children.size(); ++i) {
        const QDBusPendingCall& question = questions[i];
        const QDBusMessage reply = co_await question;
        children[i].states = statesIn(reply);
    }
    co_return children;
}

/// What has the keyboard of the active window, as deep as anybody tells; none where nobody does.
QCoro::Task<std::optional<Accessible>> focusedObject(QDBusConnection bus) {
    const QDeadlineTimer deadline(searchTime);
    std::vector<Accessible> level(1);
    level[0].service = QStringLiteral("org.a11y.atspi.Registry");
    level[0].path = QStringLiteral("/org/a11y/atspi/accessible/root");
    level = co_await childrenOf(bus, level); // applications
    level = co_await childrenOf(bus, level); // their windows
    std::erase_if(level, [](const Accessible& window) { return !window.has(isActive); });
    std::optional<Accessible> found;
    std::size_t seen = 0;
    while (!level.empty() && seen < mostObjects && !deadline.hasExpired()) {
        level = co_await childrenOf(bus, level);
        seen += level.size();
        const auto focused = std::ranges::find_if(
            level, [](const Accessible& child) { return child.has(isFocused); });
        if (focused != level.end()) {
            found = *focused;
            level = {*found};
        } else {
            std::erase_if(level, [](const Accessible& child) { return !child.has(isShowing); });
        }
    }
    co_return found;
}

QCoro::Task<Insertion> insertInto(QDBusConnection bus, Accessible target, QString text) {
    const QDBusPendingCall askingRole = ask(bus, target, accessibleInterface, "GetRole");
    const QDBusPendingCall askingInterfaces =
        ask(bus, target, accessibleInterface, "GetInterfaces");
    const QDBusPendingCall askingCaret =
        ask(bus, target, "org.freedesktop.DBus.Properties", "Get",
            {QString::fromLatin1(textInterface), QStringLiteral("CaretOffset")});
    const QDBusMessage role = co_await askingRole;
    const QDBusMessage interfaces = co_await askingInterfaces;
    const QDBusMessage caret = co_await askingCaret;
    if (role.arguments().value(0).toUInt() == terminalRole) co_return Insertion::refused;
    bool isPlace = false;
    const int place = caret.arguments().value(0).value<QDBusVariant>().variant().toInt(&isPlace);
    if (!target.has(isEditable) || !isPlace || place < 0 ||
        !interfaces.arguments().value(0).toStringList().contains(QLatin1String(editableInterface)))
        co_return Insertion::impossible;

    // The length is bytes to some and characters to others, who then take all there is.
    const auto length = static_cast<int>(text.toUtf8().size());
    const QDBusPendingCall inserting =
        ask(bus, target, editableInterface, "InsertText", {place, text, length});
    const QDBusMessage answer = co_await inserting;
    if (answer.type() == QDBusMessage::ErrorMessage) co_return Insertion::refused;
    if (!answer.arguments().value(0).toBool()) co_return Insertion::impossible;
    const auto characters = static_cast<int>(text.toUcs4().size());
    ask(bus, target, textInterface, "SetCaretOffset", {place + characters});
    co_return Insertion::done;
}

/// A connection to the accessibility bus that is asked for on another thread, as its daemon takes
/// as long as it likes. Whoever comes last closes it: this thread would wait for the other, and so
/// would all connections of the process while the library waits for a greeting.
class PendingConnection {
  public:
    explicit PendingConnection(QString itsName) : name(std::move(itsName)) {}

    /// On the other thread.
    void make(const QString& address) {
        if (tokwatch::isMuteBus(address.toStdString(), callTime)) return;
        const bool isConnected = QDBusConnection::connectToBus(address, name).isConnected();
        const State before = state.exchange(isConnected ? State::connected : State::failed);
        if (before == State::abandoned) QDBusConnection::disconnectFromBus(name);
    }
    /// Whether it is there by now; if not, nobody waits for it any more.
    bool take() { return state.exchange(State::abandoned) == State::connected; }

  private:
    enum class State { pending, connected, failed, abandoned };
    QString name;
    std::atomic<State> state{State::pending};
};

/// Given up after the time of a call.
QCoro::Task<bool> connectInTime(QString address, QString name) {
    const auto ready = std::make_shared<QPromise<void>>();
    const auto pending = std::make_shared<PendingConnection>(name);
    ready->start();
    QThreadPool::globalInstance()->start([ready, pending, address] {
        pending->make(address);
        ready->finish();
    });
    QTimer timeUp;
    timeUp.setSingleShot(true);
    QObject::connect(&timeUp, &QTimer::timeout, &timeUp, [ready] { ready->finish(); });
    timeUp.start(callTime);
    const QFuture<void> done = ready->future();
    co_await done;
    co_return pending->take();
}

QCoro::Task<QString> accessibilityAddress(QDBusConnection session) {
    Accessible starter;
    starter.service = QStringLiteral("org.a11y.Bus");
    starter.path = QStringLiteral("/org/a11y/bus");
    const QDBusPendingCall asking = ask(session, starter, "org.a11y.Bus", "GetAddress");
    const QDBusMessage reply = co_await asking;
    QString address = reply.type() == QDBusMessage::ReplyMessage
                          ? reply.arguments().value(0).toString()
                          : QString();
    co_return address;
}

} // namespace

QCoro::Task<Insertion> insertIntoFocusedText(QDBusConnection session, QString text) {
    const QString address = co_await accessibilityAddress(session);
    if (address.isEmpty()) co_return Insertion::impossible;
    static int connections = 0;
    const QString name = QStringLiteral("kivo-paste-%1").arg(++connections);
    const bool isConnected = co_await connectInTime(address, name);
    if (!isConnected) co_return Insertion::impossible;
    const auto disconnect = qScopeGuard([&name] { QDBusConnection::disconnectFromBus(name); });
    const QDBusConnection bus(name);
    const std::optional<Accessible> target = co_await focusedObject(bus);
    if (!target) co_return Insertion::impossible;
    const Accessible& place = *target;
    const Insertion insertion = co_await insertInto(bus, place, text);
    co_return insertion;
}

} // namespace kivo

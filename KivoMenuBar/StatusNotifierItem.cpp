#include "KivoMenuBar/StatusNotifierItem.h"

#include "KivoMenuBar/StatusNotifierAdaptor.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>

#include <utility>

namespace kivo {
namespace {

// A host may own the watcher's name some time before its object answers.
constexpr int offerRetries = 5;
// The bus's word for it where it may not start the service; Qt has no number for this error.
constexpr auto noOwner = "org.freedesktop.DBus.Error.NameHasNoOwner";

} // namespace

StatusNotifierItem::StatusNotifierItem(QDBusConnection connection, QString ownId, QString ownTitle,
                                       QObject* parent, std::chrono::milliseconds retryDelay)
    : QObject(parent), bus(std::move(connection)), id(std::move(ownId)),
      title(std::move(ownTitle)) {
    retry.setSingleShot(true);
    retry.setInterval(retryDelay);
    retry.callOnTimeout(this, &StatusNotifierItem::offer);
    registerStatusItemTypes();
    adaptor = new StatusNotifierAdaptor(&exported, *this);
    if (!bus.isConnected()) return;

    auto* watcher = new QDBusServiceWatcher(watcherService, bus,
                                            QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(
        watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString&, const QString&, const QString& owner) { watcherChanged(owner); });

    // The object first: a host reads it as soon as it hears of the name.
    bus.registerObject(objectPath, &exported);
    service =
        QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
    if (!bus.registerService(service)) service = bus.baseService();
    retriesLeft = offerRetries;
    offer();
}

StatusNotifierItem::~StatusNotifierItem() {
    if (service.isEmpty()) return;
    bus.unregisterObject(objectPath);
    // Without waiting for a bus that may be silent.
    QDBusMessage call = QDBusMessage::createMethodCall(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReleaseName");
    call << service;
    bus.send(call);
}

void StatusNotifierItem::watcherChanged(const QString& newOwner) {
    registered = false;
    underway = nullptr; // what the former owner answers does not matter any more
    retry.stop();
    retriesLeft = offerRetries;
    if (!newOwner.isEmpty()) offer();
}

void StatusNotifierItem::offer() {
    QDBusMessage call = QDBusMessage::createMethodCall(watcherService, watcherPath, watcherService,
                                                       "RegisterStatusNotifierItem");
    call << service;
    call.setAutoStartService(false);
    auto* pending = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    underway = pending;
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending] {
        pending->deleteLater();
        if (underway == pending) offered(*pending);
    });
}

void StatusNotifierItem::offered(const QDBusPendingCallWatcher& call) {
    registered = !call.isError();
    // No owner: its appearance will be told.
    if (registered || call.error().name() == QLatin1String(noOwner)) return;
    if (!bus.isConnected() || retriesLeft == 0) return;
    --retriesLeft;
    retry.start();
}

void StatusNotifierItem::setIcon(StatusIcon icon) {
    if (icon == shownIcon) return;
    const bool movedTheme = icon.themePath != shownIcon.themePath;
    const bool isRedrawn = icon.pictures != shownIcon.pictures;
    shownIcon = std::move(icon);
    if (isRedrawn) {
        shownPixmaps.clear();
        for (const QImage& picture : shownIcon.pictures)
            shownPixmaps.append(IconPixmap::from(picture));
    }
    if (movedTheme) emit adaptor->NewIconThemePath(shownIcon.themePath);
    emit adaptor->NewIcon();
}

void StatusNotifierItem::setLabel(const QString& label, const QString& guide) {
    if (label == shownLabel && guide == shownGuide) return;
    shownLabel = label;
    shownGuide = guide;
    emit adaptor->XAyatanaNewLabel(label, guide);
}

void StatusNotifierItem::setToolTip(const QString& toolTipTitle, const QString& text) {
    const QString escapedTitle = toolTipTitle.toHtmlEscaped();
    const QString escapedText = text.toHtmlEscaped();
    if (escapedTitle == shownToolTip.title && escapedText == shownToolTip.text) return;
    shownToolTip = {{}, {}, escapedTitle, escapedText};
    emit adaptor->NewToolTip();
}

/// Each menu is a window, and anybody on the bus can ask for thousands.
void StatusNotifierItem::requestMenu(QPoint position) {
    if (std::exchange(menuPosition, position)) return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (const auto last = std::exchange(menuPosition, std::nullopt))
                emit contextMenuRequested(*last);
        },
        Qt::QueuedConnection);
}

} // namespace kivo

#include "moc_StatusNotifierItem.cpp"

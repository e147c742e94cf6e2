#include "StatusNotifierItem.h"

#include "StatusNotifierAdaptor.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QTimer>

namespace kivo {
namespace {

constexpr auto watcherService = "org.kde.StatusNotifierWatcher";
constexpr auto watcherPath = "/StatusNotifierWatcher";
// A host may own the watcher's name some time before its object answers.
constexpr int offerRetries = 5;

} // namespace

StatusNotifierItem::StatusNotifierItem(QDBusConnection connection, QString ownId, QString ownTitle,
                                       QObject* parent, std::chrono::milliseconds retry)
    : QObject(parent), bus(std::move(connection)), id(std::move(ownId)), title(std::move(ownTitle)),
      retryDelay(retry) {
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
    bus.unregisterService(service);
    bus.unregisterObject(objectPath);
}

void StatusNotifierItem::watcherChanged(const QString& newOwner) {
    registered = false;
    retriesLeft = offerRetries;
    if (!newOwner.isEmpty()) offer();
}

void StatusNotifierItem::offer() {
    QDBusMessage call = QDBusMessage::createMethodCall(watcherService, watcherPath, watcherService,
                                                       "RegisterStatusNotifierItem");
    call << service;
    call.setAutoStartService(false);
    auto* pending = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending] {
        offered(*pending);
        pending->deleteLater();
    });
}

void StatusNotifierItem::offered(const QDBusPendingCallWatcher& call) {
    registered = !call.isError();
    // No owner: its appearance will be told.
    if (registered || call.error().type() == QDBusError::ServiceUnknown) return;
    if (!bus.isConnected() || retriesLeft == 0) return;
    --retriesLeft;
    QTimer::singleShot(retryDelay, this, [this] {
        if (!registered) offer();
    });
}

void StatusNotifierItem::setIcon(StatusIcon icon) {
    if (icon == shownIcon) return;
    const bool movedTheme = icon.themePath != shownIcon.themePath;
    shownIcon = std::move(icon);
    shownPixmaps.clear();
    for (const QImage& picture : shownIcon.pictures)
        shownPixmaps.append(IconPixmap::from(picture));
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

} // namespace kivo

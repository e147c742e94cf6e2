#pragma once

#include "KivoMenuBar/StatusItemTypes.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QImage>
#include <QList>
#include <QObject>
#include <QPoint>
#include <QString>
#include <QTimer>

#include <chrono>
#include <optional>

class QDBusPendingCallWatcher;
class QDBusServiceWatcher;

namespace kivo {

class StatusNotifierAdaptor;

/// The picture of a status item: by name for hosts that take only names, or by pixels, the same
/// picture in several sizes. A host prefers the name where both are given.
struct StatusIcon {
    QList<QImage> pictures;
    QString name;
    QString themePath;   ///< a directory in which the host finds `name`
    QString description; ///< for screen readers

    friend bool operator==(const StatusIcon&, const StatusIcon&) = default;
};

/// An item in the desktop's status area (org.kde.StatusNotifierItem), offered to whichever host is
/// there, and again to each that comes later. Without a bus, and after the bus closed, it does
/// nothing. One item a connection; main thread only.
class StatusNotifierItem : public QObject {
    Q_OBJECT
  public:
    static constexpr const char* objectPath = "/StatusNotifierItem";
    static constexpr const char* menuPath = "/MenuBar";

    /// `id` names the program for the host's own settings, `title` is for people. A host that came
    /// up but refused the item is asked again after `retryDelay`, five times.
    StatusNotifierItem(QDBusConnection bus, QString id, QString title, QObject* parent = nullptr,
                       std::chrono::milliseconds retryDelay = std::chrono::milliseconds{500});
    ~StatusNotifierItem() override;

    /// Each setter tells the host only of a change.
    void setIcon(StatusIcon icon);
    /// Live text beside the picture, where the host shows it; `guide` is the widest text to expect.
    void setLabel(const QString& label, const QString& guide);
    /// Plain text; the host may interpret markup, so it is escaped.
    void setToolTip(const QString& title, const QString& text);

    const StatusIcon& icon() const { return shownIcon; }
    const QString& label() const { return shownLabel; }
    /// The name under which the item is offered; empty without a bus.
    const QString& serviceName() const { return service; }
    bool isRegistered() const { return registered; }

  signals:
    /// A left click; the position is in screen coordinates where the host knows them.
    void activated(QPoint position);
    /// A middle click.
    void secondaryActivated(QPoint position);
    /// A right click at a host that leaves the menu to the item; of several in one turn of the
    /// event loop the last.
    void contextMenuRequested(QPoint position);
    /// Wheel motion, in the host's own unit.
    void scrolled(int delta, Qt::Orientation orientation);

  private:
    friend class StatusNotifierAdaptor;

    void offer();
    void offered(const QDBusPendingCallWatcher& call);
    void watcherChanged(const QString& newOwner);
    void requestMenu(QPoint position);

    QDBusConnection bus;
    QString id;
    QString title;
    QString service;
    QTimer retry;
    int retriesLeft = 0;
    const QDBusPendingCallWatcher* underway = nullptr; ///< the offer that counts
    bool registered = false;
    std::optional<QPoint> menuPosition; ///< where a menu was asked for in this turn

    StatusIcon shownIcon;
    IconPixmaps shownPixmaps;
    QString shownLabel;
    QString shownGuide;
    StatusToolTip shownToolTip;

    QObject exported; ///< what the bus sees: the adaptor's parent
    StatusNotifierAdaptor* adaptor = nullptr;
};

} // namespace kivo

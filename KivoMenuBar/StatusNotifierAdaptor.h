#pragma once

#include "KivoMenuBar/StatusItemTypes.h"

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>

namespace kivo {

class StatusNotifierItem;

/// The item as the bus sees it: names and types are the protocol's. The label's part of it comes
/// from a second family of hosts, which ignores what the first one lacks.
class StatusNotifierAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(int WindowId READ windowId)
    Q_PROPERTY(QString IconThemePath READ iconThemePath)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(QString IconAccessibleDesc READ iconDescription)
    Q_PROPERTY(QList<kivo::IconPixmap> IconPixmap READ iconPixmaps)
    Q_PROPERTY(QString OverlayIconName READ none)
    Q_PROPERTY(QString AttentionIconName READ none)
    Q_PROPERTY(kivo::StatusToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
    Q_PROPERTY(QDBusObjectPath Menu READ menu)
    Q_PROPERTY(QString XAyatanaLabel READ label)
    Q_PROPERTY(QString XAyatanaLabelGuide READ labelGuide)
    Q_PROPERTY(uint XAyatanaOrderingIndex READ orderingIndex)
  public:
    StatusNotifierAdaptor(QObject* exported, StatusNotifierItem& owner);

    QString category() const { return QStringLiteral("ApplicationStatus"); }
    QString id() const;
    QString title() const;
    QString status() const { return QStringLiteral("Active"); }
    int windowId() const { return 0; }
    QString iconThemePath() const;
    QString iconName() const;
    QString iconDescription() const;
    IconPixmaps iconPixmaps() const;
    QString none() const { return {}; }
    StatusToolTip toolTip() const;
    bool itemIsMenu() const { return false; }
    QDBusObjectPath menu() const;
    QString label() const;
    QString labelGuide() const;
    uint orderingIndex() const { return 0; }

    // NOLINTBEGIN(readability-identifier-naming): the protocol's names
  public slots:
    void Activate(int x, int y);
    void SecondaryActivate(int x, int y);
    void XAyatanaSecondaryActivate(uint timestamp);
    void ContextMenu(int x, int y);
    void Scroll(int delta, const QString& orientation);

  signals:
    void NewIcon();
    void NewIconThemePath(const QString& path);
    void NewToolTip();
    void NewTitle();
    void NewStatus(const QString& status);
    void XAyatanaNewLabel(const QString& label, const QString& guide);
    // NOLINTEND(readability-identifier-naming)

  private:
    StatusNotifierItem& item;
};

} // namespace kivo

#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"

#include <QObject>
#include <QProperty>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <qqmlregistration.h>

namespace tokwatch {

class AlertPreferences;

struct AlertsState {
    Q_GADGET
    Q_PROPERTY(QStringList wanted MEMBER wanted)
    Q_PROPERTY(bool quietHours MEMBER quietHours)
    Q_PROPERTY(QString quietFrom MEMBER quietFrom)
    Q_PROPERTY(QString quietUntil MEMBER quietUntil)
    Q_PROPERTY(QVariantList times MEMBER times)
  public:
    QStringList wanted; ///< raw values of AlertKinds
    bool quietHours = false;
    QString quietFrom; ///< "22:00", one of the times
    QString quietUntil;
    QVariantList times; ///< NamedChoice of the full hours, and what else is chosen
    friend bool operator==(const AlertsState&, const AlertsState&) = default;
};

/// The page "Notifications". References outlive it.
class AlertsView : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(tokwatch::AlertsState state READ state NOTIFY stateChanged)
  public:
    explicit AlertsView(AlertPreferences& preferences);

    const AlertsState& state() const { return current.value(); }

    Q_INVOKABLE void setWanted(const QString& kind, bool isWanted);
    Q_INVOKABLE void setQuietHours(bool areKept);
    Q_INVOKABLE void setQuietFrom(const QString& time);
    Q_INVOKABLE void setQuietUntil(const QString& time);

  signals:
    void stateChanged();

  private:
    AlertsState computed() const;

    AlertPreferences& preferences;
    Q_OBJECT_BINDABLE_PROPERTY(AlertsView, AlertsState, current, &AlertsView::stateChanged)
    ObservingUpdater<AlertsState> updater;
};

} // namespace tokwatch

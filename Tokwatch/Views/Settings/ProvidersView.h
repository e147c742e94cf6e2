#pragma once

#include "Tokwatch/Display/ObservingUpdater.h"
#include "Tokwatch/Views/Common/RowModel.h"
#include "Tokwatch/Views/Settings/SettingsPlaces.h"
#include "TokwatchCore/Records/ProviderID.h"

#include <QObject>
#include <QString>
#include <qqmlregistration.h>

#include <vector>

namespace tokwatch {

class AppModel;
class ViewClock;
struct ProviderLocations;

struct ProviderSettingsRow {
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id)
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(bool isEnabled MEMBER isEnabled)
    Q_PROPERTY(bool isFound MEMBER isFound)
    Q_PROPERTY(bool publishesLimits MEMBER publishesLimits)
    Q_PROPERTY(QString reads MEMBER reads)
    Q_PROPERTY(QString note MEMBER note)
    Q_PROPERTY(bool canTurnLiveLimitsOff MEMBER canTurnLiveLimitsOff)
    Q_PROPERTY(bool liveLimits MEMBER liveLimits)
    Q_PROPERTY(bool canReread MEMBER canReread)
    Q_PROPERTY(bool isRereading MEMBER isRereading)
    Q_PROPERTY(QString rereadingText MEMBER rereadingText)
    Q_PROPERTY(double rereadFraction MEMBER rereadFraction)
  public:
    QString id; ///< the provider's raw value
    QString name;
    bool isEnabled = false;
    bool isFound = false; ///< there are traces of it on this machine
    bool publishesLimits = false;
    QString reads; ///< "Reads: ~/.grok/sessions"
    QString note;  ///< empty where there is nothing to say
    bool canTurnLiveLimitsOff = false;
    bool liveLimits = false;
    bool canReread = false;
    bool isRereading = false;
    QString rereadingText;
    double rereadFraction = 0;
    friend bool operator==(const ProviderSettingsRow&, const ProviderSettingsRow&) = default;
};

/// "Reads: …" with the paths of this platform.
QString readsText(ProviderID provider, const ProviderLocations& locations);

/// The page "Providers". References outlive it.
class ProvidersView : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(tokwatch::RowModel* rows READ rows CONSTANT)
  public:
    ProvidersView(AppModel& model, const ViewClock& clock, const SettingsPlaces& places);

    RowModel* rows() { return &rowModel; }

    /// Gives the provider at one place in the order another one.
    Q_INVOKABLE void move(int from, int to);
    Q_INVOKABLE void setEnabled(const QString& provider, bool isEnabled);
    Q_INVOKABLE void setClaudeLiveLimits(bool isOn);
    Q_INVOKABLE void reread(const QString& provider);
    /// Shows the tool's own page about the user's usage in the browser.
    Q_INVOKABLE void openUsagePage(const QString& provider);

  private:
    std::vector<ProviderSettingsRow> computed(const ViewClock& clock) const;
    ProviderSettingsRow row(ProviderID provider) const;

    AppModel& model;
    SettingsPlaces places;
    RowModel rowModel;
    ObservingUpdater<std::vector<ProviderSettingsRow>> updater;
};

} // namespace tokwatch

#pragma once

#include "Platform/Seams/AlertDisplay.h"
#include "Platform/Seams/Scheduler.h"
#include "Tokwatch/Alerts/AlertFile.h"
#include "Tokwatch/App/ModelSurroundings.h"
#include "Tokwatch/Display/ObservingUpdater.h"

#include <QCoroTask>
#include <QObject>

#include <map>
#include <memory>
#include <optional>

namespace tokwatch {

class AlertPreferences;
class AppModel;

/// Tells the user of limits and logins as they change, where nobody looks. Of all processes over
/// the same data the one that works does it, and none before the user agreed to limits being asked
/// for. While nobody is there to show an alert nothing counts as told. What is shown stays when the
/// process ends, and is replaced or withdrawn by the one that works next. Main thread only.
class LimitAlerts : public QObject {
  public:
    struct Services {
        AppModel& model;
        AlertPreferences& preferences;
        AlertDisplay& display;
        std::shared_ptr<AlertFile> file;
        Scheduler& scheduler;
        RunInBackground runInBackground;
    };

    /// How late an alert may be when nothing but time brings it.
    static constexpr Seconds interval{30};

    /// References outlive it. To be made once the model has started.
    explicit LimitAlerts(Services services);
    ~LimitAlerts() override;

  private:
    AlertSituation situation() const;
    void look(const AlertSituation& situation);
    // This may be gone when it resumes.
    QCoro::Task<> tell(AlertSituation situation);
    struct Considered {
        ToldAlerts before; ///< what stood in the file
        AlertOutcome outcome;
    };
    QFuture<Considered> consider(AlertSituation situation) const;
    void show(const DueAlert& due);
    /// Notes what another process needs to replace or withdraw what this one shows.
    void note(const std::string& subject, const std::string& handle);
    /// What another process has shown counts as shown by this one.
    void takeOver(const ToldAlerts& before);

    Services services;
    ObservingUpdater<AlertSituation> updater;
    std::unique_ptr<ScheduledCall> looking;
    std::optional<ToldAlerts> told; ///< as far as this process has seen
    bool isTelling = false;
    std::map<AlertSubject, AlertKind> shown; ///< the last of each
};

} // namespace tokwatch

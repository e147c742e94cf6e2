#pragma once

#include "Platform/Linux/QtScheduler.h"
#include "Platform/Linux/UserPaths.h"
#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/App/BackgroundThreads.h"
#include "Tokwatch/App/WorkSharing.h"
#include "Tokwatch/Limits/LimitsService.h"
#include "TokwatchCore/Limits/CredentialSource.h"
#include "TokwatchCore/Limits/HTTPClient.h"
#include "TokwatchCore/Support/Calendar.h"
#include "TokwatchCore/Support/Date.h"

#include <memory>
#include <optional>

namespace tokwatch {

class Preferences;
class SystemNotifications;

/// What the application takes from outside.
struct Surroundings {
    UserPaths paths;
    CalendarSource calendar;
    Clock now;
    std::shared_ptr<CredentialSource> credentials;
    std::shared_ptr<HTTPClient> http;

    /// The user's own calendar, clock and logins, and the network.
    static Surroundings real(UserPaths paths);
};

/// The usage store in the data directory. Where it cannot be opened the reason is logged, and a
/// temporary one takes its place until it can; when not even that opens, the program stops.
std::shared_ptr<UsageStore> openStoreOrTemporary(const UserPaths& paths);

/// The application without its surfaces: the model and all that it works with, wired to the real
/// files, timers and threads. Main thread only.
class Application {
  public:
    /// References outlive the application. Throws std::system_error when a thread cannot be
    /// started.
    Application(Surroundings surroundings, WorkLease::Rank rank, Preferences& preferences,
                SystemNotifications& notifications);
    /// Waits for what is under way in the background.
    ~Application();

    /// Begins to show what is stored, and to work unless another process over the same data does.
    void start(LimitsStart limits = LimitsStart::atOnce);

    /// Takes effect within moments.
    void setRank(WorkLease::Rank rank) { sharing->setRank(rank); }

    AppModel& model() { return *appModel; }
    Scheduler& timers() { return scheduler; }
    /// For what may wait; ends with the application, which waits for it.
    RunInBackground runInBackground() {
        return [this](std::function<void()> work) { background->run(std::move(work)); };
    }

  private:
    QtScheduler scheduler;
    std::shared_ptr<UsageStore> store; ///< the only one of the process
    std::shared_ptr<LimitHistory> history;
    std::optional<IndexerService> indexer;
    std::optional<LimitsService> limitsService;
    std::optional<AppModel> appModel;
    std::optional<WorkSharing> sharing;
    std::unique_ptr<ScheduledCall> started;      ///< what follows a start
    std::optional<BackgroundThreads> background; ///< its work uses all of the above
};

} // namespace tokwatch

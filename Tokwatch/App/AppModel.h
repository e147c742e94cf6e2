#pragma once

#include "Tokwatch/App/CoalescedTask.h"
#include "Tokwatch/App/DailyPrune.h"
#include "Tokwatch/App/LimitSamples.h"
#include "Tokwatch/App/LogWatch.h"
#include "Tokwatch/App/ModelSurroundings.h"
#include "Tokwatch/App/PassRequests.h"
#include "Tokwatch/App/Refreshing.h"
#include "Tokwatch/App/StoreWatch.h"
#include "Tokwatch/Limits/AttemptTimes.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Store/UsageSummary.h"

#include <QCoroTask>
#include <QFuture>
#include <QObject>
#include <QProperty>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tokwatch {

/// Whether a model asks the providers for their limits from the start, or not before it is told
/// that its user agreed: a question carries a login.
enum class LimitsStart { atOnce, whenAllowed };

/// What a process does among others over the same data: one works (reads logs, fetches limits,
/// deletes old days, writes the snapshot), the others show what that one stores.
enum class Role { working, showing };

/// The state that every surface is drawn from, and the one who decides when logs are read, limits
/// fetched, summaries computed and the snapshot written.
///
/// Main thread only. Reading an observable inside a binding or a tracked computation observes it.
/// Equal values are not assigned, so nobody is woken for nothing.
class AppModel : public QObject {
  public:
    /// The days of the published summary.
    static constexpr std::int64_t readingDays = 30;

    explicit AppModel(ModelSurroundings given);
    ~AppModel() override;

    /// Shows what is stored, and begins all background activity that the role has; called once.
    void start(Role role = Role::working, LimitsStart limits = LimitsStart::atOnce);
    /// Begins to work, or leaves the work to another process. What is under way is finished.
    void setRole(Role role);
    Role role() const { return ownRole; }
    /// To be called every few seconds: shows what others stored, and finds that somebody removed
    /// the store's file. `isTouched` where its files were, by whomever.
    void lookAtStore(bool isTouched) { storeWatch.look(isTouched); }
    /// Begins to ask for limits. Until then no login is read and no provider asked, whoever wants a
    /// refresh. Further calls do nothing.
    void allowLimits();

    /// Usage over the last `readingDays` days.
    const UsageSummary& summary() const { return summaryState.value(); }
    const LimitsByProvider& limits() const { return limitsState.value(); }
    /// How the running windows of these limits were used so far.
    const SamplesByProvider& samples() const { return limitSamples.known(); }
    /// When each provider's service was asked and may be asked again; none for a provider that was
    /// never asked. `retry` and `refresh` ask nothing before a provider's `nextRetry`.
    const std::map<ProviderID, AttemptTimes>& attempts() const { return attemptsState.value(); }
    /// The enabled providers with local data, in the user's order.
    const std::vector<ProviderID>& present() const { return presentState.value(); }
    /// The running index pass; none when idle.
    const std::optional<IndexingProgress>& indexing() const { return indexingState.value(); }
    /// When the last summary was published.
    const std::optional<Date>& lastUpdated() const { return lastUpdatedState.value(); }
    /// Providers whose logs are being read again from the start.
    const std::set<ProviderID>& rereading() const { return rereadingState.value(); }
    /// At least one refresh that somebody asked for is under way.
    bool isRefreshing() const { return refreshing.isUnderWay(); }
    /// Providers may be asked for their limits.
    bool areLimitsAllowed() const { return areLimitsAllowedState.value(); }

    QBindable<std::optional<Date>> bindableLastUpdated() const { return &lastUpdatedState; }

    /// Computes and publishes a new summary in the background. Any number of requests during one
    /// computation lead to one more.
    void publish();
    /// Reads the logs and fetches the limits now; for the user and for other programs.
    void refresh();
    /// Fetches one provider's limits at the user's request.
    void retry(ProviderID provider);
    /// A provider's new limits, from the limits service.
    void apply(const ProviderLimits& limits, ProviderID provider);
    /// Forgets how far the provider's logs were read and reads them again.
    void reread(ProviderID provider);
    void updatePresent();
    /// Brings the limits of the providers that the popover shows up to date, where that is due.
    void popoverOpened();

    /// A summary of other than the usual days, computed in the background; none where the store
    /// failed, which is logged.
    QFuture<std::optional<UsageSummary>> summaryOf(std::int64_t days) const;

    Preferences& preferences() const { return surroundings.preferences; }
    const ProviderLocations& locations() const { return surroundings.locations; }
    /// The one that the published summary's days are of.
    const Calendar& calendar() const { return calendarState.value(); }
    Date now() const { return surroundings.now(); }
    // What views that compute something themselves do it with.
    const RunInBackground& background() const { return surroundings.runInBackground; }
    Scheduler& scheduler() const { return surroundings.scheduler; }
    const std::shared_ptr<const PriceTable>& prices() const { return surroundings.prices; }

  private:
    // The model may be gone whenever one of these resumes.
    QCoro::Task<> publishWhileWanted();
    QCoro::Task<> showStoredLimits();
    QCoro::Task<> runFirstPass();
    QCoro::Task<> passWhileWanted();
    QCoro::Task<> runReread(ProviderID provider);
    /// One index pass and what follows from its outcome.
    QCoro::Task<> pass(IndexScope scope);
    QCoro::Task<> readCodexLimits();

    void beginWork();
    void endWork();
    void observePreferences();
    /// What others stored is to be shown.
    void storeChanged();
    void refreshRequested();
    /// Makes up for what neither events nor timers tell: a lost event, an assistant installed
    /// since, a sleep.
    void lookAround();

    QFuture<std::optional<UsageSummary>> computeSummary(std::int64_t days, Calendar calendar) const;
    QFuture<void> writeSnapshot() const;

    /// By itself, not only when the user wants it.
    bool asksForLimits() const;
    void reconsiderLimits();
    void setLimits(const LimitsByProvider& newer);
    /// But for those that are older than what is known.
    void setStoredLimits(LimitsByProvider stored);
    QFuture<LimitsByProvider> readStoredLimits(std::vector<ProviderID> providers) const;

    void requestPass(const IndexScope& scope);
    void runRequestedPass();
    void setIndexing(const std::optional<IndexingProgress>& progress);
    void setRereading(ProviderID provider, bool isRereading);

    ModelSurroundings surroundings;
    QProperty<Calendar> calendarState;
    QProperty<UsageSummary> summaryState;
    QProperty<LimitsByProvider> limitsState;
    LimitSamples limitSamples;
    QProperty<std::map<ProviderID, AttemptTimes>> attemptsState;
    QProperty<std::vector<ProviderID>> presentState;
    QProperty<std::optional<IndexingProgress>> indexingState;
    QProperty<std::optional<Date>> lastUpdatedState;
    QProperty<std::set<ProviderID>> rereadingState;
    QProperty<bool> areLimitsAllowedState{false};

    Role ownRole = Role::showing;
    CoalescedTask publishing;
    /// Why the last snapshot could not be written: told once. Of the one that is writing.
    std::shared_ptr<std::string> snapshotTrouble = std::make_shared<std::string>();
    CoalescedTask passing; ///< for changed files; passes that somebody asked for run besides
    PassRequests requests; ///< for the next of those passes
    LogWatch logWatch;
    StoreWatch storeWatch;
    Refreshing refreshing;
    DailyPrune prune{surroundings};
    std::unique_ptr<ScheduledCall> periodicLook;
    std::vector<QPropertyNotifier> preferenceNotifiers;
};

} // namespace tokwatch

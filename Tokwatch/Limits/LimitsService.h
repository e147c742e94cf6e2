#pragma once

#include "Platform/Seams/Scheduler.h"
#include "Tokwatch/Limits/AttemptLedger.h"
#include "Tokwatch/Limits/AttemptTimes.h"
#include "Tokwatch/Limits/RefreshPolicy.h"
#include "TokwatchCore/Limits/BackgroundQueue.h"
#include "TokwatchCore/Limits/LimitsCache.h"
#include "TokwatchCore/Limits/LimitsProvider.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Support/Date.h"

#include <QCoroTask>
#include <QPromise>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>

namespace tokwatch {

class Preferences;

/// Decides when each provider's live limits are fetched, backs off from services that fail, shows
/// the last stored result in place of a failure, and stores and hands on every result. At most one
/// fetch a provider is under way, and all processes over one ledger ask as often as one would: what
/// another one has fetched meanwhile is shown instead. Nobody is asked while the preferences are
/// not known. Main thread only, which waits neither for
/// the store nor for the ledger; failures are statuses, nothing is thrown.
class LimitsService {
  public:
    using Providers = std::map<ProviderID, std::shared_ptr<LimitsProvider>>;

    /// Where results and attempts are kept.
    struct Storage {
        std::shared_ptr<LimitsCache> results;
        std::shared_ptr<AttemptLedger> attempts;
        RunInBackground run; ///< for the ledger's calls
    };

    /// Who wants a provider to be asked.
    enum class Wish {
        ownAccord, ///< the application's schedule
        aLook,     ///< a user who looks at the numbers
        aRetry,    ///< a user who asks for new ones
    };

    /// References outlive the service.
    LimitsService(Providers providers, Storage storage, Preferences& preferences, Clock now,
                  Scheduler& scheduler);
    ~LimitsService();

    /// Receives the result of every fetch, and of every decision not to fetch that changes what is
    /// shown.
    std::function<void(ProviderID, const ProviderLimits&)> onUpdate;
    /// Receives a provider's times whenever they have changed.
    std::function<void(ProviderID, const AttemptTimes&)> onAttempt;

    /// Shows what is stored of these providers, marked stale where it is not recent, and refreshes
    /// them.
    void start(std::span<const ProviderID> ids);

    /// Takes all timers away: nothing is fetched by itself until `start`, when another process does
    /// that. A fetch that is under way ends as usual.
    void stop();

    /// Considers one provider: fetches, or sets a timer for when it may be fetched again. `force`
    /// is a user's retry. The task ends with the fetch that is then under way, at once without one.
    QCoro::Task<> refresh(ProviderID id, bool force);

    /// Considers these, as RefreshPolicy::shouldFetch has it. A provider whose login the user
    /// refused to this process is left alone.
    void refreshIfDue(std::span<const ProviderID> ids, Wish wish = Wish::ownAccord);

    AttemptTimes attemptTimes(ProviderID id) const;
    /// From when on `refresh` asks the service; absent: at once.
    std::optional<Date> nextAttempt(ProviderID id, bool force) const;

    /// Takes the provider's timer away.
    void cancel(ProviderID id);

    /// To be called when the preferences have changed: providers that are no longer active lose
    /// their timers, those that are again get them back, and Claude is shown as unavailable when
    /// its live limits are off.
    void reconsider();

    /// The machine woke from sleep. Its network needs a while: nobody is asked by the application's
    /// own accord until it is back, or 15 s have passed, and a service that is not reached in the
    /// first minute has not failed for that.
    void resumed();
    /// Looks whether anybody is to be asked, services that could not be reached first of all.
    void networkIsBack();

  private:
    struct Life {};
    /// What came of the wish to ask a service.
    struct Claim {
        bool isGranted = false;
        AttemptRecord before;
        AttemptRecord record;
    };
    struct State {
        AttemptRecord record;    ///< as last seen in the ledger
        bool wasRefused = false; ///< by the user, to this process
        bool hasFailedAfterSleep = false;
        bool inFlight = false;
        bool wantsRetry = false;                       ///< of the consideration that is under way
        std::shared_ptr<QPromise<void>> consideration; ///< while one is under way
        bool isShownClosed = false;                    ///< by Claude's gate
        std::unique_ptr<ScheduledCall> scheduled;
        std::optional<Date> scheduledFor;
    };

    bool isActive(ProviderID id) const;
    bool isGated(ProviderID id) const;
    static bool isRefused(const State& state);
    bool isWaitingForNetwork() const { return networkTimer != nullptr; }
    void schedule(ProviderID id, Seconds delay, Wish wish = Wish::ownAccord);
    QCoro::Task<> startOne(ProviderID id);
    QCoro::Task<> wished(ProviderID id, Wish wish);
    QCoro::Task<> consider(ProviderID id);
    QCoro::Task<> closeGate(ProviderID id);
    QFuture<Claim> claim(ProviderID id, bool force);
    QFuture<AttemptLedger::Entry> withdraw(ProviderID id, Claim claim);
    QCoro::Task<> fetch(ProviderID id, Claim claim);
    QCoro::Task<> showStored(ProviderID id);
    void postpone(ProviderID id, const AttemptRecord& seen, bool force);
    QFuture<ProviderLimits> store(ProviderID id, const ProviderLimits& fresh, Date attempt);
    QFuture<AttemptLedger::Entry> note(ProviderID id, Date attempt, ProviderStatus outcome);
    bool isAfterSleep(Date attempt) const;
    ProviderLimits aged(const ProviderLimits& limits, Seconds freshness) const;
    void update(ProviderID id, const ProviderLimits& limits) const;
    void tellTimes(ProviderID id) const;

    Providers providers;
    std::shared_ptr<LimitsCache> results;
    std::shared_ptr<AttemptLedger> ledger;
    BackgroundQueue ledgerCalls;
    Preferences& preferences;
    Clock now;
    Scheduler& scheduler;
    std::map<ProviderID, State> states; ///< of those that anybody has asked for
    bool isStopped = false;
    std::optional<Date> wokeAt;
    std::unique_ptr<ScheduledCall> networkTimer;
    std::shared_ptr<Life> life; ///< lets what outlives the service notice
};

} // namespace tokwatch

#pragma once

#include "AttemptTimes.h"
#include "Date.h"
#include "LimitRecords.h"
#include "LimitsProvider.h"
#include "ProviderID.h"
#include "RefreshPolicy.h"
#include "Scheduler.h"

#include <QCoroTask>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>

namespace tokwatch {

class Preferences;
class UsageStore;

/// Decides when each provider's live limits are fetched, backs off from services that fail, shows
/// the last stored result in place of a failure, and stores and hands on every result. At most one
/// fetch a provider is under way. Main thread only; failures are statuses, nothing is thrown.
class LimitsService {
  public:
    using Providers = std::map<ProviderID, std::shared_ptr<LimitsProvider>>;

    /// References outlive the service.
    LimitsService(Providers providers, std::shared_ptr<UsageStore> store, Preferences& preferences,
                  Clock now, Scheduler& scheduler);
    ~LimitsService();

    /// Receives the result of every fetch, and of every decision not to fetch that changes what is
    /// shown.
    std::function<void(ProviderID, const ProviderLimits&)> onUpdate;
    /// Receives a provider's times whenever they have changed.
    std::function<void(ProviderID, const AttemptTimes&)> onAttempt;

    /// Shows what is stored of these providers, marked stale, and refreshes them.
    void start(std::span<const ProviderID> ids);

    /// Considers one provider: fetches, or sets a timer for when it may be fetched again. `force`
    /// is a user's retry. The task ends with the fetch that this call began, at once without one.
    QCoro::Task<> refresh(ProviderID id, bool force);

    /// Considers these on the application's own schedule, as RefreshPolicy::shouldFetch has it. A
    /// provider whose login the user refused is left alone.
    void refreshIfDue(std::span<const ProviderID> ids);

    AttemptTimes attemptTimes(ProviderID id) const;
    /// From when on `refresh` asks the service; absent: at once.
    std::optional<Date> nextAttempt(ProviderID id, bool force) const;

    /// Takes the provider's timer away.
    void cancel(ProviderID id);

    /// To be called when the preferences have changed: providers that are no longer active lose
    /// their timers, those that are again get them back, and Claude is shown as unavailable when
    /// its live limits are off.
    void reconsider();

  private:
    struct Life {};
    struct State {
        std::optional<Date> lastAttempt;
        std::optional<Date> lastSuccess;
        std::optional<ProviderStatus> lastStatus;
        Seconds currentDelay = RefreshPolicy::baseInterval;
        bool inFlight = false;
        std::unique_ptr<ScheduledCall> scheduled;
        std::optional<Date> scheduledFor;
    };

    bool isActive(ProviderID id) const;
    bool isGated(ProviderID id) const;
    static Seconds requiredSpacing(const State& state, bool force);
    void schedule(ProviderID id, Seconds delay);
    void closeGate(ProviderID id);
    QCoro::Task<> fetch(ProviderID id);
    void finish(ProviderID id, const ProviderLimits& fresh);
    std::optional<ProviderLimits> stored(ProviderID id) const;
    void store(const ProviderLimits& limits, ProviderID id) const;
    void update(ProviderID id, const ProviderLimits& limits) const;
    void tellTimes(ProviderID id) const;

    Providers providers;
    std::shared_ptr<UsageStore> usageStore;
    Preferences& preferences;
    Clock now;
    Scheduler& scheduler;
    std::map<ProviderID, State> states;
    std::shared_ptr<Life> life; ///< lets a fetch that outlives the service notice
};

} // namespace tokwatch

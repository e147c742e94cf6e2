#include "Tokwatch/Limits/LimitsService.h"

#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Presentation/ClaudeGate.h"

#include <QCoroFuture>

#include <algorithm>
#include <array>
#include <utility>

namespace tokwatch {
namespace {

/// How long a network may take after a sleep for nobody to be asked meanwhile.
constexpr Seconds networkPatience{15};
/// How long after a sleep an unreachable service says nothing about the service.
constexpr Seconds wakingTime{60};
/// An attempt that has no status after this belongs to a process that was killed: a fetch takes no
/// longer, unless a keyring has to be asked that does not answer.
constexpr Seconds longestFetch{20};

} // namespace

LimitsService::LimitsService(Providers ownProviders, Storage storage, Preferences& userPreferences,
                             Clock clock, Scheduler& timers)
    : providers(std::move(ownProviders)), results(std::move(storage.results)),
      ledger(std::move(storage.attempts)), ledgerCalls(std::move(storage.run)),
      preferences(userPreferences), now(std::move(clock)), scheduler(timers),
      life(std::make_shared<Life>()) {}

LimitsService::~LimitsService() = default;

// What the application asks for

void LimitsService::start(std::span<const ProviderID> ids) {
    isStopped = false;
    for (const ProviderID id : ids) {
        if (providers.contains(id)) startOne(id);
    }
}

void LimitsService::stop() {
    isStopped = true;
    networkTimer.reset();
    for (const auto& [id, state] : states)
        cancel(id);
}

QCoro::Task<> LimitsService::startOne(ProviderID id) {
    const std::weak_ptr<Life> weak = life;
    if (!isGated(id)) {
        co_await showStored(id);
        if (weak.expired()) co_return;
    }
    co_await wished(id, Wish::ownAccord);
}

QCoro::Task<> LimitsService::refresh(ProviderID id, bool force) {
    if (!providers.contains(id)) co_return;
    const Wish wish = force ? Wish::aRetry : Wish::ownAccord;
    co_await wished(id, wish);
}

void LimitsService::refreshIfDue(std::span<const ProviderID> ids, Wish wish) {
    for (const ProviderID id : ids) {
        if (!providers.contains(id)) continue;
        const State& state = states[id];
        const AttemptRecord& record = state.record;
        if (isRefused(state)) continue;
        if (!RefreshPolicy::shouldFetch(record.lastAttempt, record.lastSuccess, now())) continue;
        const bool isRetry = wish == Wish::aLook && state.hasFailedAfterSleep;
        wished(id, isRetry ? Wish::aRetry : wish);
    }
}

void LimitsService::cancel(ProviderID id) {
    State& state = states[id];
    state.scheduled.reset();
    state.scheduledFor.reset();
    tellTimes(id);
}

void LimitsService::reconsider() {
    for (const auto& [id, provider] : providers) {
        const auto state = states.find(id);
        if (state == states.end()) continue; // nobody has asked for it yet
        if (isGated(id))
            closeGate(id);
        else if (!isActive(id))
            cancel(id);
        else if (!state->second.scheduled && !isRefused(state->second))
            wished(id, Wish::ownAccord);
    }
}

void LimitsService::resumed() {
    wokeAt = now();
    if (isStopped) return;
    networkTimer = scheduler.after(networkPatience, [this] { networkIsBack(); });
}

void LimitsService::networkIsBack() {
    networkTimer.reset();
    if (isStopped) return;
    for (const auto& [id, state] : states) {
        const AttemptRecord& record = state.record;
        if (!isActive(id) || isRefused(state)) continue;
        if (record.lastStatus != ProviderStatus::unreachable) {
            wished(id, Wish::ownAccord);
            continue;
        }
        const Seconds elapsed = RefreshPolicy::elapsed(record.lastAttempt, now());
        if (elapsed > RefreshPolicy::minimumAttemptSpacing)
            wished(id, Wish::aRetry);
        else
            schedule(id, RefreshPolicy::minimumAttemptSpacing - elapsed, Wish::aRetry);
    }
}

// Times

AttemptTimes LimitsService::attemptTimes(ProviderID id) const {
    const auto found = states.find(id);
    if (found == states.end()) return {};
    const State& state = found->second;
    // A timer that a user's retry has set may come before the service may be asked by itself.
    const std::optional<Date> nextFetch =
        state.scheduledFor ? std::max(state.scheduledFor, nextAttempt(id, false)) : std::nullopt;
    return {state.record.lastAttempt, nextAttempt(id, true), nextFetch, state.inFlight};
}

std::optional<Date> LimitsService::nextAttempt(ProviderID id, bool force) const {
    const auto found = states.find(id);
    if (found == states.end()) return std::nullopt;
    const AttemptRecord& record = found->second.record;
    if (record.wait(force, now()) <= Seconds{0}) return std::nullopt;
    return *record.lastAttempt + record.spacing(force);
}

void LimitsService::tellTimes(ProviderID id) const {
    if (onAttempt) onAttempt(id, attemptTimes(id));
}

void LimitsService::schedule(ProviderID id, Seconds delay, Wish wish) {
    if (isStopped) return;
    State& state = states[id];
    state.scheduled = scheduler.after(delay, [this, id, wish] { wished(id, wish); });
    state.scheduledFor = now() + delay;
    tellTimes(id);
}

// Who may be asked

bool LimitsService::isActive(ProviderID id) const {
    const std::vector<ProviderID> enabled = preferences.enabledProviders();
    return preferences.areKnown() && std::ranges::find(enabled, id) != enabled.end() &&
           !isGated(id);
}

bool LimitsService::isGated(ProviderID id) const {
    return ClaudeGate::isClosed(id, preferences.claudeLiveLimits);
}

/// Asking again for a login that the user refused would nag. What was refused to another process
/// says nothing of this one: that may have been yesterday.
bool LimitsService::isRefused(const State& state) {
    return state.wasRefused && state.record.lastStatus == ProviderStatus::accessDenied;
}

/// Claude with its live limits off: what was known stays to be seen, and neither the login nor the
/// service is touched.
QCoro::Task<> LimitsService::closeGate(ProviderID id) {
    const std::weak_ptr<Life> weak = life;
    cancel(id);
    states[id].isShownClosed = true;
    const QFuture<std::optional<ProviderLimits>> reading = results->limits(id);
    const std::optional<ProviderLimits> known = co_await reading;
    if (!weak.expired() && isGated(id)) update(id, ClaudeGate::shown(known, now()));
}

// Asking

/// Begins a consideration, or adds the wish to the one that is under way, and ends with it.
QCoro::Task<> LimitsService::wished(ProviderID id, Wish wish) {
    if (isGated(id)) {
        co_await closeGate(id);
        co_return;
    }
    State& state =
        states[id]; // so that it is looked at when the settings, or the network, are back
    if (!preferences.areKnown()) co_return; // they may forbid it
    if (wish == Wish::ownAccord && (isStopped || isWaitingForNetwork())) co_return;
    state.wantsRetry = state.wantsRetry || wish == Wish::aRetry;
    if (!state.consideration) {
        state.consideration = std::make_shared<QPromise<void>>();
        state.consideration->start();
        consider(id);
    }
    const std::shared_ptr<QPromise<void>> consideration = states[id].consideration;
    if (!consideration) co_return;
    const QFuture<void> end = consideration->future();
    co_await end;
}

QCoro::Task<> LimitsService::consider(ProviderID id) {
    const std::weak_ptr<Life> weak = life;
    const std::shared_ptr<QPromise<void>> consideration = states[id].consideration;
    // The service may not be due for long.
    if (std::exchange(states[id].isShownClosed, false)) co_await showStored(id);
    bool isDecided = weak.expired();
    while (!isDecided) {
        const bool force = std::exchange(states[id].wantsRetry, false);
        const QFuture<Claim> claiming = claim(id, force);
        const Claim claimed = co_await claiming;
        if (weak.expired()) break;
        const AttemptRecord before = std::exchange(states[id].record, claimed.record);
        isDecided = claimed.isGranted || !states[id].wantsRetry;
        if (claimed.isGranted)
            co_await fetch(id, claimed);
        else if (before != claimed.record)
            co_await showStored(id);
        if (weak.expired()) break;
        if (!claimed.isGranted && isDecided) postpone(id, claimed.record, force);
    }
    if (!weak.expired()) {
        states[id].consideration.reset();
        states[id].wantsRetry = false;
    }
    consideration->finish();
}

QFuture<LimitsService::Claim> LimitsService::claim(ProviderID id, bool force) {
    return ledgerCalls.call([ledger = ledger, clock = now, id, force] {
        Claim claim;
        const AttemptLedger::Entry entry = ledger->edit(id, [&](AttemptRecord& record) {
            const Date present = clock();
            claim.before = record;
            // Noted by a clock that has been set back since. Asking at once would be a request for
            // each time that it jumps to and fro.
            const bool isAhead = record.lastAttempt && *record.lastAttempt > present;
            if (isAhead) record.lastAttempt = present;
            claim.isGranted = record.wait(force, present) <= Seconds{0};
            if (!claim.isGranted) return isAhead;
            record.lastAttempt = present;
            record.isAnswered = false;
            return true;
        });
        claim.record = entry.record;
        claim.isGranted = claim.isGranted && entry.isShared;
        return claim;
    });
}

/// For a claim of which nothing came.
QFuture<AttemptLedger::Entry> LimitsService::withdraw(ProviderID id, Claim claim) {
    return ledgerCalls.call([ledger = ledger, id, claim] {
        return ledger->edit(id, [&claim](AttemptRecord& record) {
            if (record != claim.record) return false;
            record = claim.before;
            return true;
        });
    });
}

/// Sets the timer for a provider that may not be asked yet.
void LimitsService::postpone(ProviderID id, const AttemptRecord& seen, bool force) {
    if (!isActive(id) || isRefused(states[id])) return cancel(id);
    Seconds delay = std::max(seen.wait(force, now()), Seconds{0});
    // Another process is asking; its answer is worth a look.
    const Seconds age = RefreshPolicy::elapsed(seen.lastAttempt, now());
    if (!seen.isAnswered && age < longestFetch) delay = std::min(delay, longestFetch - age);
    schedule(id, delay);
}

QCoro::Task<> LimitsService::fetch(ProviderID id, Claim claim) {
    const std::weak_ptr<Life> weak = life;
    const std::shared_ptr<LimitsProvider> provider = providers.at(id);
    if (!isActive(id)) { // since a moment ago
        const QFuture<AttemptLedger::Entry> withdrawing = withdraw(id, claim);
        const AttemptLedger::Entry entry = co_await withdrawing;
        if (!weak.expired()) states[id].record = entry.record;
        co_return;
    }
    const Date attempt = *claim.record.lastAttempt;
    states[id].inFlight = true;
    cancel(id);
    const ProviderLimits fresh = co_await provider->fetch(attempt);
    if (weak.expired()) co_return;
    states[id].inFlight = false;

    // The row before the note: who sees that another process has asked looks for its result. Both
    // also where the provider was turned off meanwhile: it was asked, and is not again before it is
    // due, whoever turns it on.
    const QFuture<ProviderLimits> writing = store(id, fresh, attempt);
    const ProviderLimits result = co_await writing;
    if (weak.expired()) co_return;
    // Before anything else is waited for: newer numbers may be on their way.
    if (isActive(id)) update(id, result);
    const QFuture<AttemptLedger::Entry> noting = note(id, attempt, fresh.status);
    const AttemptLedger::Entry noted = co_await noting;
    if (weak.expired()) co_return;

    State& state = states[id];
    state.record = noted.record;
    state.wasRefused = fresh.status == ProviderStatus::accessDenied;
    state.hasFailedAfterSleep =
        fresh.status == ProviderStatus::unreachable && isAfterSleep(attempt);
    if (!isActive(id)) co_return;
    if (state.wasRefused)
        cancel(id);
    else
        schedule(id, noted.record.currentDelay);
}

/// Answers what is there to show. Numbers of an earlier time than the attempt were stored before,
/// and newer ones may have been stored since.
QFuture<ProviderLimits> LimitsService::store(ProviderID id, const ProviderLimits& fresh,
                                             Date attempt) {
    if (fresh.status != ProviderStatus::ok || fresh.fetchedAt != attempt)
        return results->setUnanswered(fresh, id);
    return results->setLimits(fresh, id).then([fresh] { return fresh; });
}

QFuture<AttemptLedger::Entry> LimitsService::note(ProviderID id, Date attempt,
                                                  ProviderStatus outcome) {
    const bool isExcused = outcome == ProviderStatus::unreachable && isAfterSleep(attempt);
    return ledgerCalls.call([ledger = ledger, clock = now, id, attempt, outcome, isExcused] {
        return ledger->edit(id, [&](AttemptRecord& record) {
            if (!record.lastAttempt) record.lastAttempt = attempt;
            // Unless another process has begun one since.
            if (record.lastAttempt == attempt) record.isAnswered = true;
            record.lastStatus = outcome;
            if (outcome == ProviderStatus::ok) record.lastSuccess = clock();
            if (!isExcused)
                record.currentDelay = RefreshPolicy::nextDelay(outcome, record.currentDelay);
            return true;
        });
    });
}

bool LimitsService::isAfterSleep(Date attempt) const {
    return RefreshPolicy::elapsed(wokeAt, attempt) < wakingTime;
}

// What is shown

QCoro::Task<> LimitsService::showStored(ProviderID id) {
    const std::weak_ptr<Life> weak = life;
    const QFuture<std::optional<ProviderLimits>> reading = results->limits(id);
    const std::optional<ProviderLimits> stored = co_await reading;
    if (weak.expired() || isGated(id) || !stored) co_return;
    update(id, aged(*stored, providers.at(id)->freshness().value_or(RefreshPolicy::baseInterval)));
}

/// What is not recent is stale: it stands where a fetch would have brought newer numbers.
ProviderLimits LimitsService::aged(const ProviderLimits& limits, Seconds freshness) const {
    const bool isRecent = std::chrono::abs(now() - limits.fetchedAt) <= freshness;
    return isRecent ? limits : limits.markedStale();
}

void LimitsService::update(ProviderID id, const ProviderLimits& limits) const {
    if (onUpdate) onUpdate(id, limits);
}

} // namespace tokwatch

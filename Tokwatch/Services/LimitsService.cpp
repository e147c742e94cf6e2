#include "LimitsService.h"

#include "Preferences.h"
#include "UsageStore.h"

#include <algorithm>
#include <exception>

namespace tokwatch {
namespace {

/// What is shown of a provider after a fetch: its stored numbers, marked stale, where the fetch
/// failed and brought none.
ProviderLimits merged(const ProviderLimits& fresh, const std::optional<ProviderLimits>& stored) {
    const bool failed = fresh.status != ProviderStatus::ok && fresh.windows.empty();
    if (!failed || !stored || (stored->windows.empty() && !stored->credits)) return fresh;
    ProviderLimits result = stored->markedStale();
    result.status = fresh.status;
    return result;
}

} // namespace

LimitsService::LimitsService(Providers ownProviders, std::shared_ptr<UsageStore> store,
                             Preferences& userPreferences, Clock clock, Scheduler& timers)
    : providers(std::move(ownProviders)), usageStore(std::move(store)),
      preferences(userPreferences), now(std::move(clock)), scheduler(timers),
      life(std::make_shared<Life>()) {}

LimitsService::~LimitsService() = default;

void LimitsService::start(std::span<const ProviderID> ids) {
    for (const ProviderID id : ids) {
        if (!providers.contains(id)) continue;
        if (const std::optional<ProviderLimits> known = stored(id); known && !isGated(id))
            update(id, known->markedStale());
        refresh(id, false);
    }
}

QCoro::Task<> LimitsService::refresh(ProviderID id, bool force) {
    if (!providers.contains(id) || states[id].inFlight) co_return;
    if (isGated(id)) {
        closeGate(id);
        co_return;
    }
    const State& state = states[id];
    const Seconds spacing = requiredSpacing(state, force);
    const Seconds elapsed = RefreshPolicy::elapsed(state.lastAttempt, now());
    if (elapsed < spacing) {
        schedule(id, spacing - elapsed);
        co_return;
    }
    co_await fetch(id);
}

void LimitsService::refreshIfDue(std::span<const ProviderID> ids) {
    for (const ProviderID id : ids) {
        const State& state = states[id];
        if (state.lastStatus == ProviderStatus::accessDenied) continue;
        if (RefreshPolicy::shouldFetch(state.lastAttempt, state.lastSuccess, now()))
            refresh(id, false);
    }
}

void LimitsService::cancel(ProviderID id) {
    State& state = states[id];
    state.scheduled.reset();
    state.scheduledFor.reset();
    tellTimes(id);
}

AttemptTimes LimitsService::attemptTimes(ProviderID id) const {
    const auto found = states.find(id);
    if (found == states.end()) return {};
    const State& state = found->second;
    // A timer that a user's retry has set may come before the service may be asked by itself.
    const std::optional<Date> nextFetch =
        state.scheduledFor ? std::max(state.scheduledFor, nextAttempt(id, false)) : std::nullopt;
    return {state.lastAttempt, nextAttempt(id, true), nextFetch, state.inFlight};
}

std::optional<Date> LimitsService::nextAttempt(ProviderID id, bool force) const {
    const auto found = states.find(id);
    if (found == states.end() || !found->second.lastAttempt) return std::nullopt;
    const State& state = found->second;
    const Seconds spacing = requiredSpacing(state, force);
    if (RefreshPolicy::elapsed(state.lastAttempt, now()) >= spacing) return std::nullopt;
    return *state.lastAttempt + spacing;
}

void LimitsService::reconsider() {
    for (const auto& [id, provider] : providers) {
        const auto state = states.find(id);
        if (state == states.end()) continue; // nobody has asked for it yet
        if (isGated(id))
            closeGate(id);
        else if (!isActive(id))
            cancel(id);
        else if (!state->second.scheduled &&
                 state->second.lastStatus != ProviderStatus::accessDenied)
            refresh(id, false);
    }
}

bool LimitsService::isActive(ProviderID id) const {
    const std::vector<ProviderID> enabled = preferences.enabledProviders();
    return std::ranges::find(enabled, id) != enabled.end() && !isGated(id);
}

bool LimitsService::isGated(ProviderID id) const {
    return id == ProviderID::claude && !preferences.claudeLiveLimits;
}

Seconds LimitsService::requiredSpacing(const State& state, bool force) {
    if (!state.lastStatus) return RefreshPolicy::baseInterval;
    switch (*state.lastStatus) {
    case ProviderStatus::ok:
        return RefreshPolicy::baseInterval;
    case ProviderStatus::unreachable:
    case ProviderStatus::rateLimited:
        return force ? RefreshPolicy::forcedRetrySpacing
                     : std::max(state.currentDelay, RefreshPolicy::baseInterval);
    case ProviderStatus::signInNeeded:
    case ProviderStatus::accessDenied:
    case ProviderStatus::unavailable:
        break;
    }
    return force ? RefreshPolicy::forcedRetrySpacing : RefreshPolicy::baseInterval;
}

void LimitsService::schedule(ProviderID id, Seconds delay) {
    State& state = states[id];
    state.scheduled = scheduler.after(delay, [this, id] { refresh(id, false); });
    state.scheduledFor = now() + delay;
    tellTimes(id);
}

/// Claude with its live limits off: what was known stays to be seen, as stale and unavailable, and
/// neither the login nor the service is touched.
void LimitsService::closeGate(ProviderID id) {
    cancel(id);
    const std::optional<ProviderLimits> known = stored(id);
    ProviderLimits closed;
    closed.fetchedAt = now();
    if (known) closed = known->markedStale();
    closed.status = ProviderStatus::unavailable;
    if (closed != known) store(closed, id);
    update(id, closed);
}

QCoro::Task<> LimitsService::fetch(ProviderID id) {
    const std::weak_ptr<Life> weak = life;
    const std::shared_ptr<LimitsProvider> provider = providers.at(id);
    const Date attempt = now();
    State& state = states[id];
    state.inFlight = true;
    state.lastAttempt = attempt;
    cancel(id);
    const ProviderLimits fresh = co_await provider->fetch(attempt);
    if (!weak.expired()) finish(id, fresh);
}

void LimitsService::finish(ProviderID id, const ProviderLimits& fresh) {
    if (!isActive(id)) {
        states.erase(id);
        tellTimes(id);
        return;
    }
    const ProviderLimits result = merged(fresh, stored(id));
    store(result, id);

    State& state = states[id];
    state.inFlight = false;
    state.lastStatus = fresh.status;
    if (fresh.status == ProviderStatus::ok) state.lastSuccess = now();
    state.currentDelay = RefreshPolicy::nextDelay(fresh.status, state.currentDelay);
    const Seconds delay = state.currentDelay;
    update(id, result);
    // Asking again for a login that the user refused would nag.
    if (fresh.status == ProviderStatus::accessDenied)
        cancel(id);
    else
        schedule(id, delay);
}

std::optional<ProviderLimits> LimitsService::stored(ProviderID id) const {
    try {
        return usageStore->limits(id);
    } catch (const std::exception&) {
        return std::nullopt; // a row that cannot be read is one that is not there
    }
}

void LimitsService::store(const ProviderLimits& limits, ProviderID id) const {
    try {
        usageStore->setLimits(limits, id);
    } catch (const std::exception&) {
        // The result is shown all the same; the next one is stored again.
    }
}

void LimitsService::update(ProviderID id, const ProviderLimits& limits) const {
    if (onUpdate) onUpdate(id, limits);
}

void LimitsService::tellTimes(ProviderID id) const {
    if (onAttempt) onAttempt(id, attemptTimes(id));
}

} // namespace tokwatch

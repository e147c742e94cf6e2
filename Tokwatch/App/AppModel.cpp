#include "Tokwatch/App/AppModel.h"

#include "Platform/Seams/SystemNotifications.h"
#include "Tokwatch/App/MainThread.h"
#include "Tokwatch/App/ProgressRelay.h"
#include "Tokwatch/Limits/LimitsService.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Presentation/ClaudeGate.h"
#include "TokwatchCore/Store/StoredLimits.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QCoroFuture>
#include <QPointer>

#include <algorithm>
#include <exception>
#include <utility>

namespace tokwatch {
namespace {

constexpr Seconds lookInterval{300};

std::string what(const std::exception& error) {
    return error.what();
}

/// Where the store fails, nothing is known; what else needs it will tell.
LimitsByProvider knownLimits(UsageStore& store, const std::vector<ProviderID>& providers) {
    try {
        return storedLimits(store, providers);
    } catch (const UsageStoreError&) {
        return {};
    }
}

} // namespace

AppModel::AppModel(ModelSurroundings given)
    : surroundings(std::move(given)), calendarState(surroundings.calendar()),
      limitSamples(surroundings.history, surroundings.runInBackground),
      requests(surroundings.scheduler, surroundings.now, [this] { runRequestedPass(); }),
      logWatch(surroundings.locations, surroundings.providerForChangedPath,
               surroundings.openFileEvents,
               [this](const IndexScope& changed) { requestPass(changed); }),
      storeWatch(
          surroundings.store, surroundings.runInBackground, [this] { storeChanged(); },
          [this] {
              requestPass({});
              storeChanged();
          }),
      refreshing([this] { return pass({}); },
                 [this](ProviderID provider) {
                     return surroundings.limitsService.refresh(provider, true);
                 }) {}

AppModel::~AppModel() = default;

void AppModel::start(Role firstRole, LimitsStart limitsStart) {
    const QPointer<AppModel> self(this);
    updatePresent();
    // At once, so that the first title is right; nobody else uses the store yet.
    setLimits(ClaudeGate::applied(knownLimits(*surroundings.store, present()),
                                  surroundings.preferences.claudeLiveLimits, surroundings.now()));
    publish();
    surroundings.limitsService.onUpdate = [self](ProviderID provider,
                                                 const ProviderLimits& limits) {
        if (self) self->apply(limits, provider);
    };
    surroundings.limitsService.onAttempt = [self](ProviderID provider, const AttemptTimes& times) {
        if (!self) return;
        std::map<ProviderID, AttemptTimes> all = self->attempts();
        all.insert_or_assign(provider, times);
        self->attemptsState.setValue(std::move(all));
    };
    areLimitsAllowedState.setValue(limitsStart == LimitsStart::atOnce);
    setRole(firstRole);
    observePreferences();
    surroundings.notifications.onRefreshRequest([self] {
        if (self) self->refreshRequested();
    });
    surroundings.notifications.onResume([self] {
        if (!self) return;
        self->surroundings.limitsService.resumed();
        self->lookAround();
    });
    surroundings.notifications.onNetworkBack([self] {
        if (self) self->surroundings.limitsService.networkIsBack();
    });
    surroundings.notifications.onTimeZoneChange([self] {
        if (self && self->surroundings.calendar() != self->calendar()) self->publish();
    });
    periodicLook = surroundings.scheduler.every(lookInterval, [this] { lookAround(); });
}

// Roles

void AppModel::setRole(Role role) {
    if (role == ownRole) return;
    ownRole = role;
    if (role == Role::working)
        beginWork();
    else
        endWork();
}

void AppModel::beginWork() {
    if (areLimitsAllowed()) surroundings.limitsService.start(present());
    runFirstPass();
}

void AppModel::endWork() {
    surroundings.limitsService.stop();
    requests.forgetUnfinished();
    logWatch.end();
}

void AppModel::storeChanged() {
    updatePresent();
    showStoredLimits();
}

QCoro::Task<> AppModel::showStoredLimits() {
    const QPointer<AppModel> self(this);
    const QFuture<LimitsByProvider> reading = readStoredLimits(present());
    const LimitsByProvider stored = co_await reading;
    if (!self) co_return;
    setStoredLimits(stored);
    publish();
}

void AppModel::refreshRequested() {
    // Who works hears of it, too.
    if (ownRole == Role::working)
        refresh();
    else
        storeChanged();
}

// Publishing

void AppModel::publish() {
    if (publishing.request()) publishWhileWanted();
}

QCoro::Task<> AppModel::publishWhileWanted() {
    const QPointer<AppModel> self(this);
    do {
        const Calendar days = surroundings.calendar();
        const QFuture<std::optional<UsageSummary>> computing = computeSummary(readingDays, days);
        const std::optional<UsageSummary> computed = co_await computing;
        if (!self) co_return;
        if (!computed) continue; // what was known stays to be seen, with its time
        calendarState.setValue(days);
        summaryState.setValue(*computed);
        lastUpdatedState.setValue(surroundings.now());
        if (ownRole == Role::showing) continue;
        const QFuture<void> writing = writeSnapshot();
        co_await writing;
        if (!self) co_return;
    } while (publishing.finish());
}

QFuture<std::optional<UsageSummary>> AppModel::computeSummary(std::int64_t days,
                                                              Calendar in) const {
    return inBackground(surroundings.runInBackground,
                        [days, store = surroundings.store, prices = surroundings.prices,
                         calendar = std::move(in),
                         now = surroundings.now()]() -> std::optional<UsageSummary> {
                            try {
                                return store->summary(days, now, calendar, *prices);
                            } catch (const std::exception& error) {
                                systemLog("computing the summary failed: " + what(error));
                                return std::nullopt;
                            }
                        });
}

QFuture<std::optional<UsageSummary>> AppModel::summaryOf(std::int64_t days) const {
    return computeSummary(days, calendar());
}

QFuture<void> AppModel::writeSnapshot() const {
    return inBackground(
        surroundings.runInBackground,
        [store = surroundings.snapshots, told = snapshotTrouble,
         snapshot = Snapshot::make(summary(), limits(), surroundings.preferences.enabledProviders(),
                                   surroundings.now(), calendar())] {
            try {
                store.write(snapshot);
                told->clear();
            } catch (const SnapshotStore::NoContainer&) {
                // Without a shared directory there is no widget to write for.
            } catch (const std::exception& error) {
                const std::string reason = what(error);
                if (std::exchange(*told, reason) != reason)
                    systemLog("writing the widget snapshot failed: " + reason);
            }
        });
}

// Limits

void AppModel::allowLimits() {
    if (areLimitsAllowed()) return;
    areLimitsAllowedState.setValue(true);
    if (ownRole == Role::working) surroundings.limitsService.start(present());
}

bool AppModel::asksForLimits() const {
    return ownRole == Role::working && areLimitsAllowed();
}

void AppModel::apply(const ProviderLimits& newLimits, ProviderID provider) {
    const ProviderLimits* known = limitsOf(limits(), provider);
    if (known != nullptr && *known == newLimits) return;
    setLimits({{provider, newLimits}});
    publish();
}

void AppModel::setLimits(const LimitsByProvider& newer) {
    LimitsByProvider all = limits();
    for (const auto& [provider, limits] : newer)
        all.insert_or_assign(provider, limits);
    if (all == limits()) return;
    limitsState.setValue(all);
    limitSamples.read(std::move(all), surroundings.now());
}

void AppModel::setStoredLimits(LimitsByProvider stored) {
    // What this process was just told may be on its way to the store.
    std::erase_if(stored, [this](const auto& entry) {
        const ProviderLimits* known = limitsOf(limits(), entry.first);
        return known != nullptr && known->fetchedAt > entry.second.fetchedAt &&
               known->fetchedAt <= surroundings.now();
    });
    setLimits(ClaudeGate::applied(std::move(stored), surroundings.preferences.claudeLiveLimits,
                                  surroundings.now()));
}

QFuture<LimitsByProvider> AppModel::readStoredLimits(std::vector<ProviderID> providers) const {
    return inBackground(surroundings.runInBackground,
                        [store = surroundings.store, providers = std::move(providers)] {
                            return knownLimits(*store, providers);
                        });
}

QCoro::Task<> AppModel::readCodexLimits() {
    const QPointer<AppModel> self(this);
    const QFuture<LimitsByProvider> reading = readStoredLimits({ProviderID::codex});
    const LimitsByProvider stored = co_await reading;
    if (self) setLimits(stored);
}

void AppModel::popoverOpened() {
    // A day that began since then is not to wait for the next look around.
    if (lastUpdated() && calendar().dayKey(*lastUpdated()) != calendar().dayKey(now())) publish();
    if (ownRole == Role::showing)
        storeChanged();
    else if (asksForLimits())
        surroundings.limitsService.refreshIfDue(present(), LimitsService::Wish::aLook);
}

void AppModel::updatePresent() {
    std::vector<ProviderID> found = surroundings.preferences.enabledProviders();
    std::erase_if(found, [this](ProviderID id) { return !surroundings.locations.isPresent(id); });
    const std::vector<ProviderID> before = present();
    presentState.setValue(found);
    if (!asksForLimits()) return;
    std::erase_if(found, [&before](ProviderID id) { return std::ranges::count(before, id) > 0; });
    surroundings.limitsService.start(found);
}

void AppModel::observePreferences() {
    const auto providersChanged = [this] {
        reconsiderLimits();
        updatePresent();
        publish(); // the snapshot lists the providers in the user's order
    };
    Preferences& preferences = surroundings.preferences;
    preferenceNotifiers.push_back(preferences.providerOrder.addNotifier(providersChanged));
    preferenceNotifiers.push_back(preferences.disabledProviders.addNotifier(providersChanged));
    preferenceNotifiers.push_back(
        preferences.claudeLiveLimits.addNotifier([this] { reconsiderLimits(); }));
    preferenceNotifiers.push_back(
        preferences.bindableKnown().addNotifier([this] { reconsiderLimits(); }));
}

void AppModel::reconsiderLimits() {
    if (asksForLimits())
        surroundings.limitsService.reconsider();
    else
        showStoredLimits();
}

// Index passes

QCoro::Task<> AppModel::pass(IndexScope scope) {
    const QPointer<AppModel> self(this);
    const auto relay = std::make_shared<ProgressRelay>([self](const IndexingProgress& progress) {
        if (self) self->setIndexing(progress);
    });
    const QFuture<IndexOutcome> indexing = surroundings.index(
        [relay](const IndexingProgress& progress) { relay->post(progress); }, scope);
    IndexOutcome outcome;
    try {
        const QFuture<void> ended(indexing);
        co_await ended;
        if (indexing.resultCount() == 0) co_return; // the indexer went away
        outcome = indexing.result();
        if (self) requests.passed(scope, outcome.unfinished);
    } catch (const std::exception& error) {
        systemLog("indexing failed: " + what(error));
        if (self) requests.failed(surroundings.now() + Indexer::retryInterval);
    }
    relay->end();
    if (!self) co_return;
    if (outcome.codexLimitsUpdated) co_await readCodexLimits();
    if (!self) co_return;
    updatePresent();
    if (logWatch.isRunning()) logWatch.begin(); // roots may have appeared
    if (ownRole != Role::showing) co_await prune.runIfDue();
    if (!self) co_return;
    indexingState.setValue(std::nullopt);
    publish();
}

void AppModel::setIndexing(const std::optional<IndexingProgress>& progress) {
    const std::optional<IndexingProgress>& shown = indexing();
    const bool sameProvider =
        progress && shown ? progress->provider == shown->provider : !progress && !shown;
    indexingState.setValue(progress);
    if (!sameProvider) publish();
}

void AppModel::refresh() {
    if (!isRefreshing()) updatePresent();
    refreshing.request(areLimitsAllowed() ? present() : std::vector<ProviderID>());
}

void AppModel::retry(ProviderID provider) {
    if (areLimitsAllowed()) surroundings.limitsService.refresh(provider, true);
}

void AppModel::reread(ProviderID provider) {
    if (!rereading().contains(provider)) runReread(provider);
}

QCoro::Task<> AppModel::runReread(ProviderID provider) {
    const QPointer<AppModel> self(this);
    setRereading(provider, true);
    const QFuture<bool> resetting =
        inBackground(surroundings.runInBackground, [provider, store = surroundings.store] {
            try {
                store->resetCursors(provider);
                return true;
            } catch (const std::exception& error) {
                systemLog("resetting " + std::string(rawValue(provider)) +
                          " cursors failed: " + what(error));
                return false;
            }
        });
    const bool isReset = co_await resetting;
    if (!self) co_return;
    const IndexScope all;
    if (isReset) co_await pass(all);
    if (self) setRereading(provider, false);
}

void AppModel::setRereading(ProviderID provider, bool isRereading) {
    std::set<ProviderID> all = rereading();
    if (isRereading)
        all.insert(provider);
    else
        all.erase(provider);
    rereadingState.setValue(std::move(all));
}

// Watching

QCoro::Task<> AppModel::runFirstPass() {
    const QPointer<AppModel> self(this);
    const IndexScope all;
    co_await pass(all);
    if (!self || ownRole == Role::showing) co_return;
    logWatch.begin();
    // For what was written after its file had been read and before the watch began.
    requestPass(all);
}

void AppModel::requestPass(const IndexScope& scope) {
    if (ownRole == Role::showing) return;
    requests.add(scope);
    runRequestedPass();
}

void AppModel::runRequestedPass() {
    if (ownRole == Role::working && passing.request()) passWhileWanted();
}

QCoro::Task<> AppModel::passWhileWanted() {
    const QPointer<AppModel> self(this);
    do {
        const IndexScope scope = requests.take();
        co_await pass(scope);
        if (!self) co_return;
    } while (passing.finish());
}

void AppModel::lookAround() {
    storeWatch.reattach();
    if (ownRole == Role::showing) return storeChanged();
    if (logWatch.hasBegun()) logWatch.begin();
    requestPass({});
    if (asksForLimits()) surroundings.limitsService.refreshIfDue(present());
}

} // namespace tokwatch

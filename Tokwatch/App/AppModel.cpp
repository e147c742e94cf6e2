#include "Tokwatch/App/AppModel.h"

#include "Platform/Seams/SystemNotifications.h"
#include "Tokwatch/App/MainThread.h"
#include "Tokwatch/App/ProgressRelay.h"
#include "Tokwatch/App/Pruning.h"
#include "Tokwatch/Limits/ClaudeGate.h"
#include "Tokwatch/Limits/LimitsService.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Store/StoredLimits.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <QCoroFuture>
#include <QPointer>
#include <QPromise>

#include <algorithm>
#include <exception>
#include <iterator>
#include <system_error>
#include <type_traits>

namespace tokwatch {
namespace {

constexpr Seconds watchInterval{300};
constexpr Seconds watchLatency{2};
constexpr Seconds pruneInterval{86'400};

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

AppModel::AppModel(AppServices parts)
    : services(std::move(parts)), calendarState(services.calendar()),
      requests(services.scheduler, services.now, [this] { runRequestedPass(); }) {}

AppModel::~AppModel() = default;

void AppModel::start(Role firstRole, LimitsStart limitsStart) {
    const QPointer<AppModel> self(this);
    updatePresent();
    // At once, so that the first title is right; nobody else uses the store yet.
    setLimits(ClaudeGate::applied(knownLimits(*services.store, present()), services.preferences,
                                  services.now()));
    publish();
    services.limitsService.onUpdate = [self](ProviderID provider, const ProviderLimits& limits) {
        if (self) self->apply(limits, provider);
    };
    services.limitsService.onAttempt = [self](ProviderID provider, const AttemptTimes& times) {
        if (!self) return;
        std::map<ProviderID, AttemptTimes> all = self->attempts();
        all.insert_or_assign(provider, times);
        self->attemptsState.setValue(std::move(all));
    };
    areLimitsAllowedState.setValue(limitsStart == LimitsStart::atOnce);
    setRole(firstRole);
    observePreferences();
    services.notifications.onRefreshRequest([self] {
        if (self) self->refreshRequested();
    });
    services.notifications.onResume([self] {
        if (!self) return;
        self->services.limitsService.resumed();
        self->lookAround();
    });
    services.notifications.onNetworkBack([self] {
        if (self) self->services.limitsService.networkIsBack();
    });
    services.notifications.onTimeZoneChange([self] {
        if (self && self->services.calendar() != self->calendar()) self->publish();
    });
    periodicLook = services.scheduler.every(watchInterval, [this] { lookAround(); });
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
    if (areLimitsAllowed()) services.limitsService.start(present());
    runFirstPass();
}

void AppModel::endWork() {
    services.limitsService.stop();
    requests.forgetUnfinished();
    watcher.reset();
    watchedRoots.clear();
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

void AppModel::lookAtStore(bool isTouched) {
    if (services.store->isDetached())
        reattachStore();
    else if (isTouched)
        lookForOthersDoing();
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
        const Calendar days = services.calendar();
        const QFuture<std::optional<UsageSummary>> computing = computeSummary(readingDays, days);
        const std::optional<UsageSummary> computed = co_await computing;
        if (!self) co_return;
        if (!computed) continue; // what was known stays to be seen, with its time
        calendarState.setValue(days);
        summaryState.setValue(*computed);
        lastUpdatedState.setValue(services.now());
        if (ownRole == Role::showing) continue;
        const QFuture<void> writing = writeSnapshot();
        co_await writing;
        if (!self) co_return;
    } while (publishing.finish());
}

template<typename Work>
auto AppModel::inBackground(Work work) const {
    using Result = std::invoke_result_t<Work>;
    auto promise = std::make_shared<QPromise<Result>>();
    promise->start();
    services.runInBackground([promise, work = std::move(work)] {
        if constexpr (std::is_void_v<Result>)
            work();
        else
            promise->addResult(work());
        promise->finish();
    });
    return promise->future();
}

QFuture<std::optional<UsageSummary>> AppModel::computeSummary(std::int64_t days,
                                                              Calendar in) const {
    return inBackground([days, store = services.store, prices = services.prices,
                         calendar = std::move(in),
                         now = services.now()]() -> std::optional<UsageSummary> {
        try {
            return store->summary(days, now, calendar, *prices);
        } catch (const std::exception& error) {
            systemLog("computing the summary failed: " + what(error));
            return std::nullopt;
        }
    });
}

QFuture<UsageSummary> AppModel::summaryOf(std::int64_t days) const {
    return computeSummary(days, calendar()).then([](const std::optional<UsageSummary>& summary) {
        return summary.value_or(UsageSummary());
    });
}

QFuture<void> AppModel::writeSnapshot() const {
    return inBackground(
        [store = services.snapshots,
         snapshot = Snapshot::make(summary(), limits(), services.preferences.enabledProviders(),
                                   services.now(), calendar())] {
            try {
                store.write(snapshot);
            } catch (const SnapshotStore::NoContainer&) {
                // Without a shared directory there is no widget to write for.
            } catch (const std::exception& error) {
                systemLog("writing the widget snapshot failed: " + what(error));
            }
        });
}

// Limits

void AppModel::allowLimits() {
    if (areLimitsAllowed()) return;
    areLimitsAllowedState.setValue(true);
    if (ownRole == Role::working) services.limitsService.start(present());
}

bool AppModel::asksForLimits() const {
    return ownRole == Role::working && areLimitsAllowed();
}

void AppModel::apply(const ProviderLimits& newLimits, ProviderID provider) {
    const auto known = limits().find(provider);
    if (known != limits().end() && known->second == newLimits) return;
    setLimits({{provider, newLimits}});
    publish();
}

void AppModel::setLimits(const LimitsByProvider& newer) {
    LimitsByProvider all = limits();
    for (const auto& [provider, limits] : newer)
        all.insert_or_assign(provider, limits);
    limitsState.setValue(std::move(all));
}

void AppModel::setStoredLimits(LimitsByProvider stored) {
    // What this process was just told may be on its way to the store.
    std::erase_if(stored, [this](const auto& entry) {
        const auto known = limits().find(entry.first);
        return known != limits().end() && known->second.fetchedAt > entry.second.fetchedAt &&
               known->second.fetchedAt <= services.now();
    });
    setLimits(ClaudeGate::applied(std::move(stored), services.preferences, services.now()));
}

QFuture<LimitsByProvider> AppModel::readStoredLimits(std::vector<ProviderID> providers) const {
    return inBackground([store = services.store, providers = std::move(providers)] {
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
    if (ownRole == Role::showing)
        storeChanged();
    else if (asksForLimits())
        services.limitsService.refreshIfDue(present(), LimitsService::Wish::aLook);
}

void AppModel::updatePresent() {
    std::vector<ProviderID> found = services.preferences.enabledProviders();
    std::erase_if(found, [this](ProviderID id) { return !services.locations.isPresent(id); });
    const std::vector<ProviderID> before = present();
    presentState.setValue(found);
    if (!asksForLimits()) return;
    std::erase_if(found, [&before](ProviderID id) { return std::ranges::count(before, id) > 0; });
    services.limitsService.start(found);
}

void AppModel::observePreferences() {
    const auto providersChanged = [this] {
        reconsiderLimits();
        updatePresent();
        publish(); // the snapshot lists the providers in the user's order
    };
    Preferences& preferences = services.preferences;
    preferenceNotifiers.push_back(preferences.providerOrder.addNotifier(providersChanged));
    preferenceNotifiers.push_back(preferences.disabledProviders.addNotifier(providersChanged));
    preferenceNotifiers.push_back(
        preferences.claudeLiveLimits.addNotifier([this] { reconsiderLimits(); }));
}

void AppModel::reconsiderLimits() {
    if (asksForLimits())
        services.limitsService.reconsider();
    else
        showStoredLimits();
}

// Index passes

QCoro::Task<> AppModel::pass(IndexScope scope) {
    const QPointer<AppModel> self(this);
    const auto relay = std::make_shared<ProgressRelay>([self](const IndexingProgress& progress) {
        if (self) self->setIndexing(progress);
    });
    const QFuture<IndexOutcome> indexing =
        services.index([relay](const IndexingProgress& progress) { relay->post(progress); }, scope);
    IndexOutcome outcome;
    try {
        const QFuture<void> ended(indexing);
        co_await ended;
        if (indexing.resultCount() == 0) co_return; // the indexer went away
        outcome = indexing.result();
        if (self) requests.passed(scope, outcome.unfinished);
    } catch (const std::exception& error) {
        systemLog("indexing failed: " + what(error));
        if (self) requests.failed(services.now() + IndexerService::retryInterval);
    }
    relay->end();
    if (!self) co_return;
    if (outcome.codexLimitsUpdated) co_await readCodexLimits();
    if (!self) co_return;
    updatePresent();
    if (watcher && watcher->isRunning()) startWatching(); // roots may have appeared
    co_await pruneDaily();
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

QCoro::Task<> AppModel::pruneDaily() {
    const QPointer<AppModel> self(this);
    const Date now = services.now();
    const std::optional<Date> last = services.preferences.lastPruneAt();
    // A moment a day or more ahead was noted by a clock that has been set back since.
    if (isPruning || ownRole == Role::showing ||
        (last && std::chrono::abs(now - *last) < pruneInterval))
        co_return;
    isPruning = true;
    const Calendar days = services.calendar();
    const QFuture<bool> pruning = inBackground([now, store = services.store, days] {
        try {
            store->prune(pruneLimit(now, store->newestDay(), keptDays, days), days);
            return true;
        } catch (const std::exception& error) {
            systemLog("prune failed: " + what(error));
            return false;
        }
    });
    const bool pruned = co_await pruning;
    if (!self) co_return;
    isPruning = false;
    if (pruned) services.preferences.setLastPruneAt(now);
}

void AppModel::refresh() {
    // Any number of requests lead to one more pass over the logs, and to the fetches that are due.
    const bool isFirst = refreshing.request();
    if (isFirst) updatePresent();
    askForLimits();
    if (isFirst) refreshWhileWanted();
}

void AppModel::askForLimits() {
    if (!areLimitsAllowed()) return;
    for (const ProviderID provider : present()) {
        const auto last = fetches.find(provider);
        if (last != fetches.end() && !last->second.isReady()) continue;
        fetches.insert_or_assign(provider, services.limitsService.refresh(provider, true));
    }
}

void AppModel::retry(ProviderID provider) {
    if (areLimitsAllowed()) services.limitsService.refresh(provider, true);
}

QCoro::Task<> AppModel::refreshWhileWanted() {
    const QPointer<AppModel> self(this);
    isRefreshingState.setValue(true);
    const IndexScope all;
    do {
        co_await pass(all);
        while (self && !fetches.empty()) {
            const QCoro::Task<> fetch = std::move(fetches.begin()->second);
            fetches.erase(fetches.begin());
            co_await fetch;
        }
        if (!self) co_return;
    } while (refreshing.finish());
    isRefreshingState.setValue(false);
}

void AppModel::reread(ProviderID provider) {
    if (!rereading().contains(provider)) runReread(provider);
}

QCoro::Task<> AppModel::runReread(ProviderID provider) {
    const QPointer<AppModel> self(this);
    setRereading(provider, true);
    const QFuture<bool> resetting = inBackground([provider, store = services.store] {
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
    startWatching();
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
    reattachStore();
    if (ownRole == Role::showing) return storeChanged();
    if (watcher) startWatching();
    requestPass({});
    if (asksForLimits()) services.limitsService.refreshIfDue(present());
}

QCoro::Task<> AppModel::lookForOthersDoing() {
    const QPointer<AppModel> self(this);
    const QFuture<std::optional<std::int64_t>> looking =
        inBackground([store = services.store]() -> std::optional<std::int64_t> {
            try {
                return store->dataVersion();
            } catch (const std::exception&) {
                return std::nullopt; // the next operation says so
            }
        });
    const std::optional<std::int64_t> version = co_await looking;
    if (!self || !version || version == storeVersion) co_return;
    storeVersion = version;
    storeChanged();
}

QCoro::Task<> AppModel::reattachStore() {
    const QPointer<AppModel> self(this);
    if (std::exchange(isReattaching, true)) co_return;
    const QFuture<bool> reattaching = inBackground([store = services.store] {
        try {
            if (!store->reattach()) return false;
            systemLog("the usage store has been opened anew");
            return true;
        } catch (const std::exception&) {
            return false; // as before; there is a line on it in the log
        }
    });
    const bool isAnother = co_await reattaching;
    if (!self) co_return;
    isReattaching = false;
    if (!isAnother) co_return;
    requestPass({});
    storeChanged();
}

void AppModel::startWatching() {
    const std::vector<std::filesystem::path> roots = services.locations.allLogRoots();
    std::vector<std::filesystem::path> existing = roots;
    std::erase_if(existing, [](const std::filesystem::path& root) {
        std::error_code ignored;
        return !std::filesystem::is_directory(root, ignored);
    });
    // A root that appears may be another by a link than the one that was waited for.
    if (watcher && watcher->isRunning() && existing == watchedRoots) return;
    const QPointer<AppModel> self(this);
    // The new watch begins before the old one ends, so that no change falls between them.
    auto next = std::make_unique<DirectoryWatcher>(
        roots, watchLatency,
        [self](std::vector<std::string> paths) {
            onMainThread([self, paths = std::move(paths)] {
                if (self) self->pathsChanged(paths);
            });
        },
        services.openFileEvents);
    next->start();
    watcher = std::move(next);
    watchedRoots = std::move(existing);
}

void AppModel::pathsChanged(const std::vector<std::string>& paths) {
    std::vector<std::string> logs;
    for (const std::string& path : paths) {
        std::error_code ignored;
        if (services.providerForChangedPath(path))
            logs.push_back(path);
        else if (std::filesystem::is_directory(path, ignored))
            return requestPass({});
    }
    if (!logs.empty()) requestPass(logs);
}

} // namespace tokwatch

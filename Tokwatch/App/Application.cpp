#include "Tokwatch/App/Application.h"

#include "Platform/Linux/InotifyStream.h"
#include "Platform/Linux/LinuxCredentialSource.h"
#include "Platform/Linux/ProcessMemory.h"
#include "Tokwatch/Limits/AttemptFile.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Limits/LimitsCache.h"
#include "TokwatchCore/Limits/LimitsProviders.h"
#include "TokwatchCore/Limits/URLSessionHTTPClient.h"
#include "TokwatchCore/Store/LimitHistory.h"
#include "TokwatchCore/Store/NoLockWaits.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <string>
#include <utility>

namespace tokwatch {
namespace {

/// Summaries and snapshots come one by one; the others let a reset of cursors pass them, and what
/// the limits service keeps while the store waits for another process.
constexpr int backgroundThreads = 4;

std::optional<std::filesystem::path> dataDirectory(const UserPaths& paths) {
    const std::optional<std::filesystem::path> database = paths.database();
    if (!database) return std::nullopt;
    return database->parent_path();
}

} // namespace

Surroundings Surroundings::real(UserPaths paths) {
    auto credentials = std::make_shared<LinuxCredentialSource>(paths.home);
    return {std::move(paths), Calendar::current, systemNow, std::move(credentials),
            std::make_shared<URLSessionHTTPClient>()};
}

std::shared_ptr<UsageStore> openStoreOrTemporary(const UserPaths& paths) {
    const auto complain = [](const std::string& reason) {
        systemLog("opening the usage store failed (" + reason + "); using a temporary one");
    };
    const std::optional<std::filesystem::path> database = paths.database();
    try {
        if (database) return std::make_shared<UsageStore>(*database);
        complain("there is no data directory");
    } catch (const UsageStoreError& error) {
        complain(error.what());
    }
    try {
        return UsageStore::temporary(database.value_or(":memory:"));
    } catch (const UsageStoreError& error) {
        fatal(std::string("opening a temporary usage store failed: ") + error.what());
    }
}

Application::Application(Surroundings surroundings, WorkLease::Rank rank, Preferences& preferences,
                         SystemNotifications& notifications)
    : store(openStoreOrTemporary(surroundings.paths)),
      history(limitHistoryBeside(surroundings.paths.database())) {
    recordLimits(*store, history);
    background.emplace(backgroundThreads);
    const ProviderLocations locations{surroundings.paths.home};
    indexer.emplace(store, locations, surroundings.calendar, surroundings.now);
    const auto results = std::make_shared<LimitsCache>(store, runInBackground());
    limitsService.emplace(makeLimitsProviders(results, surroundings.credentials, surroundings.http,
                                              locations.codexAuthFile()),
                          LimitsService::Storage{results,
                                                 attemptLedgerBeside(surroundings.paths.database()),
                                                 runInBackground()},
                          preferences, surroundings.now, scheduler);
    appModel.emplace(ModelSurroundings{
        .preferences = preferences,
        .store = store,
        .prices = std::make_shared<PriceTable>(PriceTable::bundled()),
        .locations = locations,
        .snapshots = SnapshotStore(surroundings.paths.snapshotDirectory()),
        .limitsService = *limitsService,
        .index =
            [this](IndexerService::ProgressHandler progress, const IndexScope& scope) {
                return indexer->index(std::move(progress), scope);
            },
        .providerForChangedPath =
            [this](std::string_view path) { return indexer->providerForChangedPath(path); },
        .openFileEvents = InotifyStream::open,
        .notifications = notifications,
        .scheduler = scheduler,
        .runInBackground = runInBackground(),
        .calendar = surroundings.calendar,
        .now = surroundings.now,
        .history = history,
    });
    sharing.emplace(*appModel, scheduler, WorkLease(dataDirectory(surroundings.paths), rank),
                    surroundings.paths.database());
}

Application::~Application() {
    // Whoever ends the session does not wait for another process's lock.
    const NoLockWaits hold;
    sharing.reset();
    appModel.reset();
    background.reset();
}

void Application::start(LimitsStart limits) {
    sharing->start(limits);
    // Most of the code that has run by then will not run again, and the process stays for days.
    constexpr Seconds settled{10};
    started = scheduler.after(settled, giveBackMemory);
}

} // namespace tokwatch

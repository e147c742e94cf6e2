#include "Tokwatch/App/Application.h"

#include "Platform/Linux/InotifyStream.h"
#include "Platform/Linux/LinuxCredentialSource.h"
#include "Tokwatch/Limits/AttemptFile.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Limits/LimitsCache.h"
#include "TokwatchCore/Limits/LimitsProviders.h"
#include "TokwatchCore/Limits/URLSessionHTTPClient.h"
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

Application::Application(Surroundings world, WorkLease::Rank rank, Preferences& preferences,
                         SystemNotifications& notifications)
    : store(openStoreOrTemporary(world.paths)) {
    background.emplace(backgroundThreads);
    const ProviderLocations locations{world.paths.home};
    indexer.emplace(store, locations, world.calendar, world.now);
    const auto runInBackground = [this](std::function<void()> work) {
        background->run(std::move(work));
    };
    const auto results = std::make_shared<LimitsCache>(store, runInBackground);
    limitsService.emplace(
        makeLimitsProviders(results, world.credentials, world.http, locations.codexHome()),
        LimitsService::Storage{results, attemptLedgerBeside(world.paths.database()),
                               runInBackground},
        preferences, world.now, scheduler);
    appModel.emplace(AppServices{
        .preferences = preferences,
        .store = store,
        .prices = std::make_shared<PriceTable>(PriceTable::bundled()),
        .locations = locations,
        .snapshots = SnapshotStore(world.paths.snapshotDirectory()),
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
        .runInBackground = runInBackground,
        .calendar = world.calendar,
        .now = world.now,
    });
    sharing.emplace(*appModel, scheduler, WorkLease(dataDirectory(world.paths), rank),
                    world.paths.database());
}

Application::~Application() {
    sharing.reset();
    appModel.reset();
    background.reset();
}

} // namespace tokwatch

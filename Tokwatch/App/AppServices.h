#pragma once

#include "Tokwatch/Indexing/IndexerService.h"
#include "TokwatchCore/Ingestion/ProviderLocations.h"
#include "TokwatchCore/Store/PriceTable.h"
#include "TokwatchCore/Store/SnapshotStore.h"
#include "TokwatchCore/Support/Calendar.h"
#include "TokwatchCore/Support/Date.h"
#include "TokwatchCore/Support/Scheduler.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tokwatch {

class LimitsService;
class Preferences;
class SystemNotifications;
class UsageStore;

/// A running watch over directories, which ends with it.
class FileWatch {
  public:
    virtual ~FileWatch() = default;

    /// False where it could not begin, or has ended by itself.
    virtual bool isRunning() const = 0;
};

/// Watches existing directories with all that is below them. The callback gets changed paths, or a
/// directory's own path when everything below it may have changed; it comes on any thread.
using WatchFiles = std::function<std::unique_ptr<FileWatch>(
    std::vector<std::filesystem::path> roots,
    std::function<void(std::vector<std::string>)> onChange)>;

/// Runs work on a thread other than the main one, later.
using RunInBackground = std::function<void(std::function<void()> work)>;

/// What the model works with. References outlive the model.
struct AppServices {
    Preferences& preferences;
    std::shared_ptr<UsageStore> store;
    std::shared_ptr<const PriceTable> prices;
    ProviderLocations locations;
    SnapshotStore snapshots;
    LimitsService& limitsService;
    /// The indexer's operations.
    std::function<QFuture<IndexOutcome>(IndexerService::ProgressHandler, const IndexScope&)> index;
    std::function<std::optional<ProviderID>(std::string_view path)> providerForChangedPath;
    WatchFiles watchFiles;
    SystemNotifications& notifications;
    Scheduler& scheduler;
    RunInBackground runInBackground;
    CalendarSource calendar;
    Clock now;
};

} // namespace tokwatch

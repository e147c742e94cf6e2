#pragma once

#include "Platform/Seams/FileEventStream.h"
#include "Platform/Seams/Scheduler.h"
#include "Tokwatch/Indexing/IndexerService.h"
#include "TokwatchCore/Ingestion/ProviderLocations.h"
#include "TokwatchCore/Limits/InBackground.h"
#include "TokwatchCore/Store/PriceTable.h"
#include "TokwatchCore/Store/SnapshotStore.h"
#include "TokwatchCore/Support/Calendar.h"
#include "TokwatchCore/Support/Date.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tokwatch {

class LimitHistory;
class LimitsService;
class Preferences;
class SystemNotifications;
class UsageStore;

/// What the model takes from outside. References outlive the model.
struct ModelSurroundings {
    Preferences& preferences;
    std::shared_ptr<UsageStore> store;
    std::shared_ptr<const PriceTable> prices;
    ProviderLocations locations;
    SnapshotStore snapshots;
    LimitsService& limitsService;
    /// The indexer's operations.
    std::function<QFuture<IndexOutcome>(IndexerService::ProgressHandler, const IndexScope&)> index;
    std::function<std::optional<ProviderID>(std::string_view path)> providerForChangedPath;
    OpenFileEventStream openFileEvents;
    SystemNotifications& notifications;
    Scheduler& scheduler;
    RunInBackground runInBackground;
    CalendarSource calendar;
    Clock now;
    std::shared_ptr<LimitHistory> history = nullptr; ///< of the limits; may be absent
};

} // namespace tokwatch

#pragma once

#include "Calendar.h"
#include "ProviderID.h"
#include "ProviderLocations.h"
#include "UsageEvent.h"
#include "UsageStore.h"

#include <QFuture>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace tokwatch {

/// How far the running pass has come through the present provider's files, in bytes.
struct IndexingProgress {
    ProviderID provider = ProviderID::claude;
    std::int64_t bytesRead = 0;
    std::int64_t bytesTotal = 0;
    friend bool operator==(const IndexingProgress&, const IndexingProgress&) = default;
};

struct IndexOutcome {
    std::int64_t newEvents = 0;      ///< events that the store had not seen before
    bool codexLimitsUpdated = false; ///< Codex lines carried limits, which are now in the store
    friend bool operator==(const IndexOutcome&, const IndexOutcome&) = default;
};

/// Brings the store up to date with the assistants' logs. Callable from any thread; passes run one at a time
/// on a thread of the service's own, in the order in which they were asked for.
class IndexerService {
  public:
    /// Hands a batch to the store and returns how many of its events were new; throws UsageStoreError.
    using IngestEvents = std::function<std::int64_t(std::span<const UsageEvent>, const Calendar&)>;
    /// Called on the service's thread.
    using ProgressHandler = std::function<void(const IndexingProgress&)>;

    IndexerService(std::shared_ptr<UsageStore> store, const ProviderLocations& locations, Calendar calendar);
    IndexerService(std::shared_ptr<UsageStore> store, const ProviderLocations& locations, Calendar calendar,
                   IngestEvents ingestEvents);
    /// Waits for the running pass to stop at its next file; what it had read stays stored.
    ~IndexerService();

    /// One pass over all files. While a pass runs, a further call waits and then makes a pass of its own.
    /// Failures of single files are logged and do not fail the pass.
    QFuture<IndexOutcome> index(ProgressHandler progress = {});

    /// Whose log a changed path is; none for anything else.
    std::optional<ProviderID> providerForChangedPath(std::string_view path) const;

  private:
    class Executor;
    std::unique_ptr<Executor> executor;
    ProviderLocations locations;
};

} // namespace tokwatch

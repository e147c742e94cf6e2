#pragma once

#include "Tokwatch/Indexing/Indexer.h"

#include <QFuture>

#include <memory>
#include <optional>
#include <string_view>

namespace tokwatch {

/// Brings the store up to date with the assistants' logs. Callable from any thread; passes run one
/// at a time on a thread of the service's own, in the order in which they were asked for.
class IndexerService {
  public:
    using IngestEvents = Indexer::IngestEvents;
    /// Called on the service's thread.
    using ProgressHandler = Indexer::ProgressHandler;

    /// As for an `Indexer`. The clock is read on the service's threads.
    IndexerService(std::shared_ptr<UsageStore> store, ProviderLocations locations,
                   CalendarSource calendar, Clock clock, IngestEvents ingestEvents = {});
    /// Lets the running pass end after its present slice; what it stored stays, and the rest is
    /// read the next time.
    ~IndexerService();
    IndexerService(const IndexerService&) = delete;
    IndexerService& operator=(const IndexerService&) = delete;

    /// One pass over all files, or over those among the given paths, as a watcher reports them:
    /// then it costs what has changed, not what there is. While a pass runs, a further call waits
    /// and then makes a pass of its own; those that wait for a pass over all files share one, which
    /// reports its progress to the first of them. What `Indexer::pass` throws comes out of the
    /// future.
    QFuture<IndexOutcome> index(ProgressHandler progress = {}, const IndexScope& scope = {});

    /// Whose log a changed path is; none for anything else.
    std::optional<ProviderID> providerForChangedPath(std::string_view path) const;

    /// Of the last pass that ended.
    IndexStatistics statistics() const { return indexer.statistics(); }

  private:
    class Executor;

    ProviderLocations locations;
    Indexer indexer;
    std::unique_ptr<Executor> executor; ///< last: its thread uses the indexer
};

} // namespace tokwatch

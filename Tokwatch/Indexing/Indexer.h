#pragma once

#include "TokwatchCore/Ingestion/ProviderLocations.h"
#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Records/UsageEvent.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/Calendar.h"
#include "TokwatchCore/Support/Date.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace tokwatch {

/// How far the running pass has come through the present provider's files, in bytes.
struct IndexingProgress {
    ProviderID provider = ProviderID::claude;
    std::int64_t bytesRead = 0;
    std::int64_t bytesTotal = 0;
    friend bool operator==(const IndexingProgress&, const IndexingProgress&) = default;
};

/// The paths that a pass looks at; all files when absent.
using IndexScope = std::optional<std::vector<std::string>>;

/// A file that a later pass has to look at although no change may tell of it: it ends in a response
/// that may go on, or the store had no room for what it holds.
struct UnfinishedFile {
    std::string path;
    Date due;
    friend bool operator==(const UnfinishedFile&, const UnfinishedFile&) = default;
};

struct IndexOutcome {
    std::int64_t newEvents = 0;      ///< events that the store had not seen before
    bool codexLimitsUpdated = false; ///< newer limits from Codex's logs are in the store now
    std::vector<UnfinishedFile> unfinished = {};
    friend bool operator==(const IndexOutcome&, const IndexOutcome&) = default;
};

/// What a pass went through, for people who asked for it.
struct IndexStatistics {
    struct Provider {
        ProviderID provider = ProviderID::claude;
        std::int64_t files = 0; ///< found, unchanged ones included
        std::int64_t newEvents = 0;
        std::int64_t bytesRead = 0;
    };
    std::vector<Provider> providers;
    std::int64_t unreadableFiles = 0;   ///< each has its line in the log
    std::int64_t unreadableFolders = 0; ///< the log has a line for each root
    std::int64_t unstoredFiles = 0;     ///< the store failed; they are read again by the next pass
};

/// Brings the store up to date with the assistants' logs, on the thread that asks for it.
class Indexer {
  public:
    /// Hands a batch to the store and returns how many of its events were new; throws
    /// UsageStoreError.
    using IngestEvents = std::function<std::int64_t(std::span<const UsageEvent>, const Calendar&)>;
    using ProgressHandler = std::function<void(const IndexingProgress&)>;

    /// How long after a failure of the store its files are due again: a disk that was full has room
    /// when somebody made some.
    static constexpr Seconds retryInterval{15};

    /// As many threads as read and parse at once: one for each core, but no more than can be ahead
    /// of the one that writes.
    static std::size_t usualReaders();

    /// Batches go to the store's own `ingest` when no other function is given. The clock is read by
    /// all readers.
    Indexer(std::shared_ptr<UsageStore> store, ProviderLocations locations, CalendarSource calendar,
            Clock clock, IngestEvents ingestEvents = {}, std::size_t readers = usualReaders());
    Indexer(const Indexer&) = delete;
    Indexer& operator=(const Indexer&) = delete;

    /// One pass over all files, or over those in the scope, to its end or until `stop` is set: then
    /// it ends after the present slice. One at a time. Failures of single files are logged and do
    /// not fail the pass; throws UsageStoreError when the store's cursors cannot be read.
    IndexOutcome pass(const ProgressHandler& progress, const IndexScope& scope = {},
                      const std::atomic<bool>& stop = false);

    /// Of the last pass that ended. Callable from any thread.
    IndexStatistics statistics() const;

  private:
    void logListingFailures(const std::vector<std::string>& failures);

    std::shared_ptr<UsageStore> store;
    ProviderLocations locations;
    CalendarSource calendar; ///< asked once a pass
    Clock now;
    IngestEvents ingestEvents;
    std::size_t readers;
    std::vector<std::string> listingFailures; ///< of the last pass over all files
    std::set<std::string> storeTroubles;      ///< of the last pass
    mutable std::mutex mutex;                 ///< over `last`
    IndexStatistics last;
};

} // namespace tokwatch

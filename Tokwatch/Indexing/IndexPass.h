#pragma once

#include "Tokwatch/Indexing/Indexer.h"
#include "Tokwatch/Indexing/SliceReader.h"
#include "TokwatchCore/Ingestion/ProviderLocations.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/Calendar.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace tokwatch {

/// One pass over the log files in its scope. Large amounts are read and parsed on threads that run
/// ahead, while this thread writes what they read in file order; the result does not depend on
/// timing or on their number.
///
/// Slices are stored in groups: the events of a group in one transaction, then its cursors in
/// another. A pass that dies in between finds its events already seen the next time. Cursors belong
/// to what the store held as they were loaded: where its file becomes another one, or they are
/// reset, the pass ends, and whoever did that asks for a new one.
class IndexPass {
  public:
    struct Surroundings {
        UsageStore& store;
        const ProviderLocations& locations;
        const Calendar& calendar;
        const Clock& now;
        const Indexer::IngestEvents& ingestEvents;
        const Indexer::ProgressHandler& progress;
        const IndexScope& scope;
        std::set<std::string>& toldTroubles; ///< why the store took nothing, as was told
        std::size_t readers;                 ///< threads at most that run ahead
        const std::atomic<bool>& stop;       ///< ends the pass after the present slice
    };

    explicit IndexPass(Surroundings given);

    /// Throws UsageStoreError when the cursors cannot be read; failures of single files are logged.
    IndexOutcome run();

    IndexStatistics statistics() const;

    /// One for each root that could not be listed whole, ready for the log.
    const std::vector<std::string>& listingFailures() const { return unlisted; }

  private:
    /// A slice whose events wait in `events` for the group's transaction.
    struct StoredSlice {
        std::size_t file = 0;
        std::size_t first = 0; ///< of its events
        std::size_t count = 0;
        FileCursor cursor;
        bool cursorMoved = false;
    };

    /// What concerns one provider.
    struct Part {
        IndexingProgress progress;
        IndexStatistics::Provider statistics;
    };

    /// A file that was listed, and the row of its cursor, but for those that need no decoding.
    struct Candidate {
        ProviderID provider = ProviderID::claude;
        bool isUnchanged = false;
        LogFile file;
        std::optional<std::string> cursorRow;
    };

    std::vector<Candidate> candidates();
    void noteCursors(std::vector<Candidate>& listed);
    void findPending();
    Part& partOf(ProviderID provider);
    std::vector<LogFile> filesIn(ProviderID provider, const std::filesystem::path& root);
    void noteFailures(const std::filesystem::path& root,
                      const std::vector<LogListing::Failure>& failures);
    std::optional<FileCursor> storedCursor(const Candidate& candidate) const;
    void readInline();
    void readAhead(std::size_t readers);
    void take(Slice slice);
    void noteCodexLimits(std::optional<ProviderLimits> limits);
    void flush();
    bool isOver() const { return isOvertaken || surroundings.stop; }
    void addEvents(std::span<const UsageEvent> batch);
    void save(std::span<const FileCursor> cursors);
    void storeCodexLimits();
    void storeOneByOne();
    void giveUpGroup(const std::string& reason);
    void giveUp(std::size_t file, const std::string& reason);
    void logTroubles();
    void logOnce(const std::string& reason, const std::vector<std::size_t>& which);
    void noteUnfinished();

    Surroundings surroundings;
    std::vector<Part> parts;
    std::vector<PendingFile> files; ///< changed ones, provider by provider
    std::set<std::size_t> unstored; ///< files of which a slice could not be stored
    std::map<std::string, std::vector<std::size_t>> unstoredFor; ///< the same by reason
    std::map<std::string, std::vector<std::size_t>> starvedFor;  ///< unread for want of something
    std::map<std::size_t, Date> held; ///< files that end in an unfinished response, until when
    std::vector<StoredSlice> group;
    std::size_t groupEvents; ///< how many events make a group full
    std::vector<UsageEvent> events;
    std::optional<ProviderLimits> codexLimits; ///< the newest of this pass
    bool codexLimitsPending = false;           ///< not stored yet
    bool isAnythingStored = false;
    std::uint64_t generation = 0; ///< of the store, as the cursors were loaded
    bool isOvertaken = false;     ///< the store is of another one
    Part* present = nullptr;      ///< whose slices are being taken
    std::int64_t unreadableFiles = 0;
    std::int64_t unreadableFolders = 0;
    std::vector<std::string> unlisted;
    IndexOutcome outcome;
};

} // namespace tokwatch

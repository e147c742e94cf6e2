#pragma once

#include "Calendar.h"
#include "FileCursor.h"
#include "LimitRecords.h"
#include "UsageEvent.h"
#include "UsageStoreError.h"
#include "UsageSummary.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace tokwatch {

namespace sqlite {
class Connection;
}

/// The one persistent store: sums per provider, model and day, sessions, the keys of every event
/// already counted, read positions of log files, and the last known limits.
///
/// Callable from any thread; operations run one at a time. Every operation throws UsageStoreError
/// when SQLite fails, and what writes more than one row is atomic. The schema's version is 1; later
/// versions are used as they are.
class UsageStore {
  public:
    static constexpr std::int32_t schemaVersion = 1;

    /// How long a writer of another process may hold the lock before an operation gives up. Writers
    /// of ours hold it for tenths of a second.
    static constexpr std::chrono::milliseconds lockPatience{5000};

    /// Opens and, when new, creates the database. A path whose last component is ":memory:" opens
    /// one that lives in memory only. The file and its directory are created private to the user.
    explicit UsageStore(const std::filesystem::path& path,
                        std::chrono::milliseconds patience = lockPatience);
    ~UsageStore();
    UsageStore(const UsageStore&) = delete;
    UsageStore& operator=(const UsageStore&) = delete;

    /// Adds the events whose keys are new, and returns how many were. One transaction: all or none.
    std::int64_t ingest(std::span<const UsageEvent> events, const Calendar& calendar);

    /// The stored cursor of a path; DecodingError when the row does not decode.
    std::optional<FileCursor> cursor(const std::string& path);

    /// All stored cursors as their undecoded JSON, by path: for a pass that visits every file, one
    /// statement instead of one a file.
    std::unordered_map<std::string, std::string> cursorTexts();

    void save(const FileCursor& cursor);
    /// Several cursors in one transaction.
    void save(std::span<const FileCursor> cursors);

    /// Forgets the read positions of one provider's files, so that the next pass reads them from
    /// the start; what was counted stays counted once.
    void resetCursors(ProviderID provider);

    std::optional<ProviderLimits> limits(ProviderID provider);
    void setLimits(const ProviderLimits& limits, ProviderID provider);

    /// Deletes all days before the day of `before`.
    void prune(Date before, const Calendar& calendar);

    UsageSummary summary(std::int64_t days, Date now, const Calendar& calendar,
                         const PriceTable& prices);

    /// Gives the database's caches back to the system; for the end of a long pass.
    void releaseMemory();

    /// "ok", or what SQLite's own check of the file found. Reads the whole file.
    std::string integrity();

    /// The names of all models with stored usage, in text order, for diagnostics.
    std::vector<std::string> models();

  private:
    void migrate();

    std::mutex queue; ///< entered for the whole of every operation
    std::unique_ptr<sqlite::Connection> db;
};

/// Whether a cursor row, as `save` writes it, stands at this place. Decoding thousands of rows only
/// to find that nothing changed would be a third of such a pass.
bool standsAt(const std::string& json, std::uint64_t inode, std::int64_t offset);

/// Decodes a cursor row. The row's path, not the one inside the JSON, is the cursor's: JSON cannot
/// hold every file name.
FileCursor decodeCursorRow(const std::string& path, const std::string& json);

} // namespace tokwatch

#pragma once

#include "TokwatchCore/Records/FileCursor.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Records/UsageEvent.h"
#include "TokwatchCore/Store/UsageStoreError.h"
#include "TokwatchCore/Store/UsageSummary.h"
#include "TokwatchCore/Support/Calendar.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tokwatch {

namespace sqlite {
class Connection;
}

/// The one persistent store: sums per provider, model and day, sessions, the keys of every event
/// already counted, read positions of log files, and the last known limits.
///
/// Callable from any thread; operations run one at a time, so a caller may wait for another's
/// batch. Every operation throws UsageStoreError when SQLite fails, and what writes more than one
/// row is atomic. The schema's version is 1; later versions are used as they are.
///
/// Several processes share the file. Nothing but SQLite may open and close it: closing any
/// descriptor of a file drops all locks that its process has on it, and another process would then
/// delete the write-ahead log under this one.
class UsageStore {
  public:
    static constexpr std::int32_t schemaVersion = 1;

    /// How long another process may hold the lock before an operation, or opening, gives up.
    /// Writers of ours hold it for tenths of a second.
    static constexpr std::chrono::milliseconds lockPatience{5000};

    /// Opens and, when new, creates the database. A path whose last component is ":memory:" opens
    /// one that lives in memory only. The file and its directory are created private to the user.
    explicit UsageStore(const std::filesystem::path& path,
                        std::chrono::milliseconds patience = lockPatience);
    /// A store in memory that stands in for the one at `path`, until `reattach` can open that.
    static std::shared_ptr<UsageStore> temporary(const std::filesystem::path& path);
    /// What a sound database holds where it cannot be written: on a disk that is full or read-only.
    static std::shared_ptr<UsageStore> readOnly(const std::filesystem::path& path,
                                                std::chrono::milliseconds patience = lockPatience);
    ~UsageStore();
    UsageStore(const UsageStore&) = delete;
    UsageStore& operator=(const UsageStore&) = delete;

    /// Whether the file at the store's path is not the one in use: somebody removed or replaced it,
    /// or it appeared where none could be opened. Waits for no operation.
    bool isDetached() const;

    /// Opens the file at the store's path where it is not the one in use. True when that changed
    /// what the store holds, so that all logs are to be looked at anew. The last known limits are
    /// taken along. A file that cannot be opened throws; the store is one in memory then.
    bool reattach();

    /// A number that changes whenever anybody else commits something to the file.
    std::int64_t dataVersion();

    /// Adds the events whose keys are new, and returns how many were. One transaction: all or none.
    std::int64_t ingest(std::span<const UsageEvent> events, const Calendar& calendar);

    /// The stored cursor of a path; DecodingError when the row does not decode.
    std::optional<FileCursor> cursor(const std::string& path);

    /// All stored cursors as their undecoded JSON, by path: for a pass that visits every file, one
    /// statement instead of one a file.
    std::unordered_map<std::string, std::string> cursorTexts();
    /// The same, row by row; what `visit` is given lives no longer than its call, and it may not
    /// call the store.
    using CursorVisitor = std::function<void(std::string_view path, std::string_view json)>;
    void visitCursors(const CursorVisitor& visit);

    /// Whether no file was ever read into it.
    bool isUnread();

    /// Another number once the store holds something else than cursors that were loaded before went
    /// on from: its file is another one, or cursors were reset.
    std::uint64_t generation();

    void save(const FileCursor& cursor);
    /// Several cursors in one transaction. False, and none saved, where the store is of another
    /// generation by now, which may not have what they have passed.
    bool save(std::span<const FileCursor> cursors, std::uint64_t loadedFrom);

    /// Forgets the read positions of one provider's files, so that the next pass reads them from
    /// the start; what was counted stays counted once.
    void resetCursors(ProviderID provider);

    /// Forgets where the files of these paths were read to.
    void dropCursors(const std::function<bool(const std::string& path)>& isDropped);

    std::optional<ProviderLimits> limits(ProviderID provider);
    void setLimits(const ProviderLimits& limits, ProviderID provider);
    /// Stores what `change` makes of the stored limits, if anything; whether it did. What nobody
    /// can read counts as nothing. Atomic among processes.
    using LimitsChange =
        std::function<std::optional<ProviderLimits>(const std::optional<ProviderLimits>& stored)>;
    bool changeLimits(ProviderID provider, const LimitsChange& change);
    /// Stores a reading unless the stored one is as new; one from the future does not count, nor
    /// one without windows.
    /// Whether it was stored. Atomic among processes.
    bool setLimitsIfNewer(const ProviderLimits& limits, ProviderID provider, Date now);

    /// Hears of every result that was stored, on the thread that did. Set before others use the
    /// store; must not throw.
    std::function<void(const ProviderLimits&, ProviderID)> onLimitsStored;

    /// Deletes all days before the day of `before`.
    void prune(Date before, const Calendar& calendar);

    /// The key of the last day with usage; none in an empty store.
    std::optional<std::string> newestDay();

    UsageSummary summary(std::int64_t days, Date now, const Calendar& calendar,
                         const PriceTable& prices);

    /// Gives the database's caches back to the system; for the end of a long pass.
    void releaseMemory();

    /// Throws what SQLite's own check of the file finds. Reads the whole file.
    void requireSound();

    /// The names of all models with stored usage, in text order, for diagnostics.
    std::vector<std::string> models();

  private:
    /// Which file a database is, whatever its path names by now.
    struct FileIdentity {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
    };

    UsageStore(std::filesystem::path path, std::unique_ptr<sqlite::Connection> connection);
    void setIdentity(std::optional<FileIdentity> present);
    void noteWal();
    void removeWal();
    static std::optional<FileIdentity> identityOf(const std::filesystem::path& path);
    /// What it stored.
    std::optional<ProviderLimits> storeChange(ProviderID provider, const LimitsChange& change);

    const std::filesystem::path file;
    std::mutex queue; ///< entered for the whole of every operation
    std::unique_ptr<sqlite::Connection> db;
    std::uint64_t contents = 0; ///< the present generation
    mutable std::mutex identityMutex;
    std::optional<FileIdentity> identity;    ///< of the open file; none in memory
    std::optional<FileIdentity> walIdentity; ///< of its write-ahead log
};

/// Whether a cursor row, as `save` writes it, stands at this place. Decoding thousands of rows only
/// to find that nothing changed would be a third of such a pass.
bool standsAt(std::string_view json, std::uint64_t inode, std::int64_t offset);

/// Decodes a cursor row. The row's path, not the one inside the JSON, is the cursor's: JSON cannot
/// hold every file name.
FileCursor decodeCursorRow(const std::string& path, const std::string& json);

} // namespace tokwatch

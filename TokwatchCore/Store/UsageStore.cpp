#include "TokwatchCore/Store/UsageStore.h"

#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Store/DatabaseFile.h"
#include "TokwatchCore/Store/EventBatch.h"
#include "TokwatchCore/Store/SQLite.h"
#include "TokwatchCore/Store/StoreRows.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <exception>

namespace tokwatch {
namespace {

// Keys are the bulk of it: with a rowid and an index by day each would be written to three trees
// instead of one, which made a first pass a third slower. The daily prune, the only one who asks by
// day, is quicker without. Stores that earlier versions made have all three trees, and the same
// statements serve both.
constexpr const char* schema =
    "CREATE TABLE IF NOT EXISTS seen(key TEXT PRIMARY KEY, day TEXT NOT NULL) WITHOUT ROWID;\n"
    "CREATE TABLE IF NOT EXISTS daily(\n"
    "  provider TEXT NOT NULL, model TEXT NOT NULL, day TEXT NOT NULL,\n"
    "  uncached INTEGER NOT NULL DEFAULT 0, cache_read INTEGER NOT NULL DEFAULT 0,\n"
    "  w5m INTEGER NOT NULL DEFAULT 0, w1h INTEGER NOT NULL DEFAULT 0,\n"
    "  output INTEGER NOT NULL DEFAULT 0, reasoning INTEGER NOT NULL DEFAULT 0,\n"
    "  reported_usd REAL,\n"
    "  PRIMARY KEY(provider, model, day));\n"
    "CREATE INDEX IF NOT EXISTS daily_day ON daily(day);\n"
    "CREATE TABLE IF NOT EXISTS sessions(\n"
    "  provider TEXT NOT NULL, session_id TEXT NOT NULL, day TEXT NOT NULL,\n"
    "  PRIMARY KEY(provider, session_id));\n"
    "CREATE INDEX IF NOT EXISTS sessions_day ON sessions(day);\n"
    "CREATE TABLE IF NOT EXISTS cursors(path TEXT PRIMARY KEY, json TEXT NOT NULL);\n"
    "CREATE TABLE IF NOT EXISTS limits(provider TEXT PRIMARY KEY, json TEXT NOT NULL);";

/// How long moving to another file waits for others who open it.
constexpr std::chrono::milliseconds reattachPatience{500};

// Replacing the row would change its index, too, which is another page of the log.
constexpr const char* saveCursor =
    "INSERT INTO cursors(path, json) VALUES(?1, ?2) ON CONFLICT(path) DO UPDATE SET json = excluded.json";
constexpr const char* saveLimits =
    "INSERT INTO limits(provider, json) VALUES(?1, ?2) ON CONFLICT(provider) DO UPDATE SET json = excluded.json";

constexpr const char* selectSessions =
    "SELECT provider, day, COUNT(*) FROM sessions WHERE day >= ?1 AND day <= ?2 GROUP BY provider, day";

/// In kilobytes. What most calls need, a look at all cursors among them: they come by once.
constexpr const char* smallCache = "PRAGMA cache_size=-2048";
/// The first pass over years of logs inserts keys all over their index, in key order within each
/// batch, so a page is needed once a batch and 12 MB of them are as fast as 24 MB.
constexpr const char* largeCache = "PRAGMA cache_size=-12288";
/// How many pages the write-ahead log takes until they are written back. In a long pass fewer
/// checkpoints write each page less often.
constexpr const char* fewPages = "PRAGMA wal_autocheckpoint=512";
constexpr const char* manyPages = "PRAGMA wal_autocheckpoint=4096";
/// A batch of so many events is one of a long pass.
constexpr std::size_t manyEvents = 1'024;

void prepare(sqlite::Connection& db) {
    // Of a new file. A batch of keys touches most pages of their index, so that half as many of
    // twice the size take half the calls; a single event writes a few, which larger ones would make
    // dear.
    db.execute("PRAGMA page_size=8192");
    db.execute("PRAGMA journal_mode=WAL");
    // In write-ahead mode a commit survives a crash of the program without a sync, and a power cut
    // with one at each checkpoint. What a power cut could undo is read again from the logs, since
    // keys, sums and cursors go back together.
    db.execute("PRAGMA synchronous=NORMAL");
    db.execute(smallCache);
    db.execute(fewPages);
    // What a long pass made of it is given back with the next checkpoint.
    db.execute("PRAGMA journal_size_limit=4194304");
}

constexpr sqlite::Tables usageTables{UsageStore::schemaVersion, schema, prepare};

std::unique_ptr<sqlite::Connection> openInMemory() {
    auto db = std::make_unique<sqlite::Connection>(":memory:");
    sqlite::makeTables(*db, usageTables);
    return db;
}

bool isInMemory(const std::filesystem::path& path) {
    return path.filename() == ":memory:";
}

std::optional<ProviderLimits> readLimits(sqlite::Connection& db, ProviderID provider) {
    const std::string id(rawValue(provider));
    const sqlite::Use query(db.statement("SELECT json FROM limits WHERE provider = ?1"));
    query->bind(1, id);
    if (!query->step()) return std::nullopt;
    return decode<ProviderLimits>(parseJson(query->text(0)), DateCoding::secondsSince2001);
}

void writeLimits(sqlite::Connection& db, const ProviderLimits& limits, ProviderID provider) {
    const std::string id(rawValue(provider));
    const std::string json = jsonText(encode(limits, DateCoding::secondsSince2001));
    db.statement(saveLimits).bind(1, id).bind(2, json).run();
}

/// On a full disk what a failed transaction left in the write-ahead log is room that others lack.
void emptyWal(sqlite::Connection& db) noexcept {
    try {
        db.execute("PRAGMA wal_checkpoint(TRUNCATE)");
    } catch (const UsageStoreError&) {
        // Others read it at this moment, and the next checkpoint empties it.
    }
}

/// Limits that `to` does not know, or only as they were earlier. Mere convenience: what fails is
/// fetched again.
void carryLimits(sqlite::Connection& from, sqlite::Connection& to) {
    for (const ProviderID provider : allCases<ProviderID>) {
        try {
            const std::optional<ProviderLimits> known = readLimits(from, provider);
            if (!known) continue;
            const std::optional<ProviderLimits> there = readLimits(to, provider);
            if (!there || there->fetchedAt < known->fetchedAt) writeLimits(to, *known, provider);
        } catch (const std::exception&) {
            continue;
        }
    }
}

void write(sqlite::Connection& db, const FileCursor& cursor) {
    const std::string json = jsonText(encode(cursor));
    db.statement(saveCursor).bind(1, cursor.path).bind(2, json).run();
}

} // namespace

bool standsAt(std::string_view json, std::uint64_t inode, std::int64_t offset) {
    // What stands in front is the path as a JSON text, in which no quote comes without a backslash.
    const std::string place = R"(","inode":)" + std::to_string(inode) + R"(,"offset":)" +
                              std::to_string(offset) + R"(,"context":{)";
    return json.find(place) != std::string_view::npos && json.ends_with("}}");
}

FileCursor decodeCursorRow(const std::string& path, const std::string& json) {
    FileCursor cursor = decode<FileCursor>(parseJson(json));
    cursor.path = path;
    return cursor;
}

UsageStore::UsageStore(const std::filesystem::path& path, std::chrono::milliseconds patience)
    : UsageStore(path, isInMemory(path) ? openInMemory()
                                        : sqlite::openTables(path, patience, usageTables)) {
    if (isInMemory(path)) return;
    identity = identityOf(path);
    noteWal();
}

UsageStore::UsageStore(std::filesystem::path path, std::unique_ptr<sqlite::Connection> connection)
    : file(std::move(path)), db(std::move(connection)) {}

UsageStore::~UsageStore() = default;

std::shared_ptr<UsageStore> UsageStore::temporary(const std::filesystem::path& path) {
    return std::shared_ptr<UsageStore>(new UsageStore(path, openInMemory()));
}

std::shared_ptr<UsageStore> UsageStore::readOnly(const std::filesystem::path& path,
                                                 std::chrono::milliseconds patience) {
    return std::shared_ptr<UsageStore>(
        new UsageStore(path, sqlite::openFileForReading(path, patience)));
}

std::optional<UsageStore::FileIdentity> UsageStore::identityOf(const std::filesystem::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino};
}

bool UsageStore::isDetached() const {
    if (isInMemory(file)) return false;
    const std::lock_guard lock(identityMutex);
    return !identity || identity != identityOf(file);
}

bool UsageStore::reattach() {
    const std::lock_guard lock(queue);
    if (isInMemory(file) || (identity && !isDetached())) return false;
    // What is open is closed before anything is opened: where the file was removed and its side
    // files were not, a later close of theirs would drop the locks of the new connection.
    std::unique_ptr<sqlite::Connection> meanwhile = openInMemory();
    carryLimits(*db, *meanwhile);
    db = std::move(meanwhile);
    ++contents;
    removeWal();
    setIdentity(std::nullopt);
    std::unique_ptr<sqlite::Connection> opened =
        sqlite::openTables(file, reattachPatience, usageTables);
    carryLimits(*db, *opened);
    db = std::move(opened);
    ++contents;
    setIdentity(identityOf(file));
    noteWal();
    return true;
}

void UsageStore::noteWal() {
    walIdentity = identityOf(sqlite::realPath(file).string() + "-wal");
}

/// What was moved into the file's place has no log yet, and would be overlaid with the one of the
/// file that was there.
void UsageStore::removeWal() {
    if (!walIdentity) return;
    const std::string real = sqlite::realPath(file).string();
    if (walIdentity != identityOf(real + "-wal")) return;
    for (const char* suffix : {"-wal", "-shm"}) {
        std::error_code none;
        std::filesystem::remove(real + suffix, none);
    }
}

void UsageStore::setIdentity(std::optional<FileIdentity> present) {
    const std::lock_guard lock(identityMutex);
    identity = present;
}

std::int64_t UsageStore::dataVersion() {
    const std::lock_guard lock(queue);
    return db->number("PRAGMA data_version");
}

std::int64_t UsageStore::ingest(std::span<const UsageEvent> events, const Calendar& calendar) {
    const std::lock_guard lock(queue);
    const bool isOfLongPass = events.size() >= manyEvents;
    if (isOfLongPass) db->execute(largeCache);
    db->execute(isOfLongPass ? manyPages : fewPages);
    sqlite::Transaction transaction(*db);
    const std::int64_t count = EventBatch(*db, calendar).add(events);
    transaction.commit();
    return count;
}

std::optional<FileCursor> UsageStore::cursor(const std::string& path) {
    const std::lock_guard lock(queue);
    sqlite::Use query(db->statement("SELECT json FROM cursors WHERE path = ?1"));
    query->bind(1, path);
    if (!query->step()) return std::nullopt;
    return decodeCursorRow(path, query->text(0));
}

std::unordered_map<std::string, std::string> UsageStore::cursorTexts() {
    const std::lock_guard lock(queue);
    return readCursorTexts(*db);
}

void UsageStore::visitCursors(const CursorVisitor& visit) {
    const std::lock_guard lock(queue);
    visitCursorRows(*db, visit);
}

bool UsageStore::isUnread() {
    const std::lock_guard lock(queue);
    sqlite::Use query(db->statement("SELECT 1 FROM cursors LIMIT 1"));
    return !query->step();
}

std::uint64_t UsageStore::generation() {
    const std::lock_guard lock(queue);
    return contents;
}

void UsageStore::save(const FileCursor& cursor) {
    const std::lock_guard lock(queue);
    write(*db, cursor);
}

bool UsageStore::save(std::span<const FileCursor> cursors, std::uint64_t loadedFrom) {
    const std::lock_guard lock(queue);
    if (loadedFrom != contents) return false;
    sqlite::Transaction transaction(*db);
    for (const FileCursor& cursor : cursors)
        write(*db, cursor);
    transaction.commit();
    return true;
}

void UsageStore::resetCursors(ProviderID provider) {
    const std::lock_guard lock(queue);
    const std::unordered_map<std::string, std::string> texts = readCursorTexts(*db);
    sqlite::Transaction transaction(*db);
    for (const auto& [path, json] : texts) {
        try {
            const FileCursor cursor = decodeCursorRow(path, json);
            const auto entry = cursor.context.find("provider");
            if (entry == cursor.context.end() || entry->second != rawValue(provider)) continue;
        } catch (const DecodingError&) {
            continue; // Whose it was cannot be told; it stays.
        }
        db->statement("DELETE FROM cursors WHERE path = ?1").bind(1, path).run();
    }
    transaction.commit();
    ++contents;
}

void UsageStore::dropCursors(const std::function<bool(const std::string& path)>& isDropped) {
    const std::lock_guard lock(queue);
    std::vector<std::string> dropped;
    visitCursorRows(*db, [&](std::string_view path, std::string_view) {
        if (std::string text(path); isDropped(text)) dropped.push_back(std::move(text));
    });
    if (dropped.empty()) return;
    sqlite::Transaction transaction(*db);
    for (const std::string& path : dropped)
        db->statement("DELETE FROM cursors WHERE path = ?1").bind(1, path).run();
    transaction.commit();
}

std::optional<ProviderLimits> UsageStore::limits(ProviderID provider) {
    const std::lock_guard lock(queue);
    return readLimits(*db, provider);
}

void UsageStore::setLimits(const ProviderLimits& limits, ProviderID provider) {
    {
        const std::lock_guard lock(queue);
        writeLimits(*db, limits, provider);
    }
    if (onLimitsStored) onLimitsStored(limits, provider);
}

bool UsageStore::changeLimits(ProviderID provider, const LimitsChange& change) {
    const std::optional<ProviderLimits> limits = storeChange(provider, change);
    if (limits && onLimitsStored) onLimitsStored(*limits, provider);
    return limits.has_value();
}

std::optional<ProviderLimits> UsageStore::storeChange(ProviderID provider,
                                                      const LimitsChange& change) {
    const std::lock_guard lock(queue);
    sqlite::Transaction transaction(*db);
    std::optional<ProviderLimits> stored;
    try {
        stored = readLimits(*db, provider);
    } catch (const DecodingError&) {
        stored.reset();
    }
    std::optional<ProviderLimits> limits = change(stored);
    if (!limits) return std::nullopt;
    writeLimits(*db, *limits, provider);
    transaction.commit();
    return limits;
}

bool UsageStore::setLimitsIfNewer(const ProviderLimits& limits, ProviderID provider, Date now) {
    return changeLimits(provider, [&](const std::optional<ProviderLimits>& stored) {
        // An attempt that found no windows says nothing about any, however late it was.
        const bool isAsNew = stored && !stored->windows.empty() &&
                             stored->fetchedAt >= limits.fetchedAt && stored->fetchedAt <= now;
        return isAsNew ? std::nullopt : std::optional(limits);
    });
}

void UsageStore::prune(Date before, const Calendar& calendar) {
    const std::lock_guard lock(queue);
    const std::string day = calendar.dayKey(before);
    try {
        sqlite::Transaction transaction(*db);
        for (const char* deletion :
             {"DELETE FROM daily WHERE day < ?1", "DELETE FROM sessions WHERE day < ?1",
              "DELETE FROM seen WHERE day < ?1"})
            db->statement(deletion).bind(1, day).run();
        transaction.commit();
    } catch (const UsageStoreError&) {
        emptyWal(*db);
        throw;
    }
}

std::optional<std::string> UsageStore::newestDay() {
    const std::lock_guard lock(queue);
    const sqlite::Use query(db->statement("SELECT MAX(day) FROM daily"));
    if (!query->step() || query->isNull(0)) return std::nullopt;
    return query->text(0);
}

UsageSummary UsageStore::summary(std::int64_t days, Date now, const Calendar& calendar,
                                 const PriceTable& prices) {
    const SummaryWindow window(days, now, calendar);
    std::vector<DailyRow> rows;
    std::vector<SessionCount> sessions;
    {
        const std::lock_guard lock(queue);
        const sqlite::Use daily(db->statement(selectUsageOfDays));
        daily->bind(1, window.firstKey()).bind(2, window.todayKey);
        while (daily->step())
            if (std::optional<DailyRow> row = dailyRowIn(daily)) rows.push_back(*std::move(row));
        sqlite::Use counts(db->statement(selectSessions));
        counts->bind(1, window.firstKey()).bind(2, window.todayKey);
        while (counts->step()) {
            const std::optional<ProviderID> provider = providerFromRawValue(counts->text(0));
            if (provider) sessions.push_back({*provider, counts->text(1), counts->integer(2)});
        }
    }
    return summarize(days, window, rows, sessions, prices);
}

void UsageStore::releaseMemory() {
    const std::lock_guard lock(queue);
    db->execute(smallCache);
    db->releaseMemory();
}

void UsageStore::requireSound() {
    const std::lock_guard lock(queue);
    const sqlite::Use check(db->statement("PRAGMA integrity_check(1)"));
    const std::string answer = check->step() ? check->text(0) : "no answer";
    if (answer != "ok") throw UsageStoreError(SQLITE_CORRUPT, answer);
}

std::vector<std::string> UsageStore::models() {
    const std::lock_guard lock(queue);
    std::vector<std::string> names;
    sqlite::Use query(db->statement("SELECT DISTINCT model FROM daily ORDER BY model"));
    while (query->step())
        names.push_back(query->text(0));
    return names;
}

} // namespace tokwatch

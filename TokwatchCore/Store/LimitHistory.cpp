#include "TokwatchCore/Store/LimitHistory.h"

#include "TokwatchCore/Store/DatabaseFile.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Store/UsageStoreError.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace tokwatch {
namespace {

constexpr const char* fileName = "history.sqlite";

constexpr const char* schema =
    "CREATE TABLE samples(\n"
    "  provider TEXT NOT NULL, window TEXT NOT NULL, moment REAL NOT NULL,\n"
    "  used REAL NOT NULL, reset REAL,\n"
    "  PRIMARY KEY(provider, window, moment)) WITHOUT ROWID;\n"
    "CREATE INDEX samples_moment ON samples(moment);";

constexpr const char* selectNewest =
    "SELECT moment, used, reset FROM samples\n"
    "WHERE provider = ?1 AND window = ?2 AND moment <= ?3 ORDER BY moment DESC LIMIT 1";

constexpr const char* selectBetween =
    "SELECT moment, used, reset FROM samples\n"
    "WHERE provider = ?1 AND window = ?2 AND moment BETWEEN ?3 AND ?4 AND used BETWEEN 0 AND 1\n"
    "ORDER BY moment";

/// The longest time before its reset that a window of unknown duration is looked for.
constexpr Seconds longestWindow{32 * 86'400.0};

struct Named {
    std::string window;
    LimitSample sample;
};

std::vector<Named> samplesOf(const ProviderLimits& limits) {
    std::vector<Named> samples;
    for (const LimitWindow& window : limits.windows)
        if (const auto sample = sampleOf(window, limits.fetchedAt))
            samples.push_back({window.id, *sample});
    return samples;
}

LimitSample sampleIn(const sqlite::Use& row) {
    return {dateFromUnixSeconds(row->real(0)), row->real(1),
            row->isNull(2) ? std::nullopt : std::optional(dateFromUnixSeconds(row->real(2)))};
}

std::optional<LimitSample> newestUntil(sqlite::Connection& db, const std::string& provider,
                                       const std::string& window, Date moment) {
    const sqlite::Use row(db.statement(selectNewest));
    row->bind(1, provider).bind(2, window).bind(3, unixSeconds(moment));
    return row->step() ? std::optional(sampleIn(row)) : std::nullopt;
}

std::vector<LimitSample> samplesBetween(sqlite::Connection& db, const std::string& provider,
                                        const std::string& window, Date begin, Date end) {
    std::vector<LimitSample> samples;
    const sqlite::Use row(db.statement(selectBetween));
    row->bind(1, provider).bind(2, window).bind(3, unixSeconds(begin)).bind(4, unixSeconds(end));
    while (row->step())
        samples.push_back(sampleIn(row));
    return samples;
}

void insert(sqlite::Connection& db, const std::string& provider, const Named& named) {
    const auto& [window, sample] = named;
    sqlite::Statement& statement =
        db.statement("INSERT OR REPLACE INTO samples(provider, window, moment, used, reset)\n"
                     "VALUES(?1, ?2, ?3, ?4, ?5)");
    statement.bind(1, provider).bind(2, window).bind(3, unixSeconds(sample.moment));
    statement.bind(4, sample.usedFraction).bindNull(5);
    if (sample.resetsAt) statement.bind(5, unixSeconds(*sample.resetsAt));
    statement.run();
}

/// Deletes what lies before the kept time. `newest` is the last moment that was there before the
/// present one, so that a clock which is a year ahead for a moment does not empty the history.
void prune(sqlite::Connection& db, Date present, Date newest) {
    const Date limit = std::min(present, newest) - LimitHistory::keptTime;
    db.statement("DELETE FROM samples WHERE moment < ?1").bind(1, unixSeconds(limit)).run();
}

} // namespace

LimitHistory::LimitHistory(std::filesystem::path path, std::chrono::milliseconds lockWait)
    : file(std::move(path)), patience(lockWait) {}

std::unique_ptr<sqlite::Connection> LimitHistory::open() const {
    return sqlite::openTables(file, patience, {schemaVersion, schema});
}

/// Like a writer where that is possible, for only that rolls back what a killed one left.
std::unique_ptr<sqlite::Connection> LimitHistory::openForReading() const {
    try {
        return open();
    } catch (const UsageStoreError& error) {
        if (error.isLocked()) throw;
        return sqlite::openFileForReading(file, patience);
    }
}

void LimitHistory::record(const ProviderLimits& limits, ProviderID provider) {
    const std::vector<Named> samples = samplesOf(limits);
    if (samples.empty()) return;
    const std::string id(rawValue(provider));
    try {
        const std::unique_ptr<sqlite::Connection> db = open();
        sqlite::Transaction transaction(*db);
        const Date newest =
            dateFromUnixSeconds(static_cast<double>(db->number("SELECT MAX(moment) FROM samples")));
        bool isAnythingNew = false;
        for (const Named& named : samples) {
            const auto before = newestUntil(*db, id, named.window, named.sample.moment);
            if (!isWorthKeeping(before, named.sample)) continue;
            insert(*db, id, named);
            isAnythingNew = true;
        }
        if (!isAnythingNew) return;
        prune(*db, limits.fetchedAt, newest);
        transaction.commit();
    } catch (const std::exception& error) {
        tell(error.what());
    }
}

std::optional<SamplesByProvider> LimitHistory::samples(const LimitsByProvider& limits, Date now) {
    std::error_code none;
    SamplesByProvider found;
    if (!std::filesystem::exists(file, none)) return found;
    try {
        const std::unique_ptr<sqlite::Connection> db = openForReading();
        for (const auto& [provider, known] : limits) {
            const std::string id(rawValue(provider));
            for (const LimitWindow& window : known.windows) {
                if (!window.resetsAt || *window.resetsAt <= now) continue;
                const Seconds length = window.duration ? Seconds{*window.duration} : longestWindow;
                found[provider][window.id] =
                    samplesBetween(*db, id, window.id, *window.resetsAt - length - sampleSpacing,
                                   *window.resetsAt);
            }
        }
        return found;
    } catch (const std::exception& error) {
        tell(error.what());
        return std::nullopt;
    }
}

void LimitHistory::requireUsable() const {
    const std::unique_ptr<sqlite::Connection> db = open();
    const sqlite::Transaction transaction(*db);
    db->number("SELECT COUNT(provider || window || moment || used || reset) FROM samples");
}

void LimitHistory::tell(std::string_view reason) {
    const std::lock_guard lock(mutex);
    if (std::exchange(isTold, true)) return;
    systemLog("the history of limits in " + file.string() + " fails: " + std::string(reason) +
              "; forecasts may be missing");
}

void recordLimits(UsageStore& store, std::shared_ptr<LimitHistory> history) {
    if (!history) return;
    store.onLimitsStored = [history = std::move(history)](const ProviderLimits& limits,
                                                          ProviderID provider) {
        history->record(limits, provider);
    };
}

std::shared_ptr<LimitHistory>
limitHistoryBeside(const std::optional<std::filesystem::path>& database,
                   std::chrono::milliseconds patience) {
    if (!database) return nullptr;
    return std::make_shared<LimitHistory>(database->parent_path() / fileName, patience);
}

} // namespace tokwatch

#include "Tests/Support/TemporaryDirectory.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <filesystem>
#include <limits>
#include <thread>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using testing::TemporaryDirectory;

/// Looks into the database behind the store's back.
class Inspector {
  public:
    explicit Inspector(const std::filesystem::path& file) { sqlite3_open(file.c_str(), &db); }
    ~Inspector() { sqlite3_close(db); }
    Inspector(const Inspector&) = delete;
    Inspector& operator=(const Inspector&) = delete;

    /// The rows, their columns joined by "|".
    std::vector<std::string> rows(const char* sql) const {
        std::vector<std::string> found;
        sqlite3_stmt* statement = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(db, sql, -1, &statement, nullptr), SQLITE_OK)
            << sqlite3_errmsg(db);
        while (sqlite3_step(statement) == SQLITE_ROW) {
            std::string row;
            for (int i = 0; i < sqlite3_column_count(statement); ++i) {
                const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
                row += (i > 0 ? "|" : "") + std::string(text == nullptr ? "NULL" : text);
            }
            found.push_back(row);
        }
        sqlite3_finalize(statement);
        return found;
    }
    void execute(const char* sql) const {
        EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK);
    }

  private:
    sqlite3* db = nullptr;
};

UsageEvent event(const std::string& key, const char* when = "2024-03-10T12:00:00Z",
                 std::int64_t input = 1) {
    return {
        ProviderID::claude, "m", "s", key, *parseISO8601(when), TokenCounts{input, 2, 3, 4, 5, 6},
        std::nullopt};
}

class UsageStoreTest : public ::testing::Test {
  protected:
    std::int64_t ingest(const std::vector<UsageEvent>& events) {
        return store->ingest(events, utc);
    }
    std::vector<std::string> rows(const char* sql) const { return Inspector(file).rows(sql); }
    std::vector<std::string> daily() const {
        return rows("SELECT * FROM daily ORDER BY provider, model, day");
    }

    TemporaryDirectory directory;
    std::filesystem::path file = directory / "Tokwatch/usage.sqlite";
    Calendar utc = Calendar::utc();
    std::unique_ptr<UsageStore> store = std::make_unique<UsageStore>(file);
};

TEST_F(UsageStoreTest, CountsEveryKeyOnce) {
    EXPECT_EQ(ingest({}), 0);
    const std::vector<UsageEvent> batch{event("b"), event("a"),
                                        event("b", "2024-03-11T00:00:00Z", 100)};
    EXPECT_EQ(ingest(batch), 2);
    const std::vector<std::string> once{"claude|m|2024-03-10|2|4|6|8|10|12|NULL"};
    EXPECT_EQ(daily(), once);
    EXPECT_EQ(ingest(batch), 0);
    EXPECT_EQ(daily(), once);
    EXPECT_EQ(ingest({event("c")}), 1);
    EXPECT_EQ(daily(), std::vector<std::string>{"claude|m|2024-03-10|3|6|9|12|15|18|NULL"});
    EXPECT_THAT(rows("SELECT key, day FROM seen ORDER BY key"),
                ElementsAre("a|2024-03-10", "b|2024-03-10", "c|2024-03-10"));
}

TEST_F(UsageStoreTest, KeepsKeysApartThatDifferBehindANUL) {
    using namespace std::string_literals;
    EXPECT_EQ(ingest({event("k\0b"s), event("k\0a"s), event("k"), event("k\0b"s)}), 3);
    EXPECT_EQ(ingest({event("k\0a"s), event("k\0c"s)}), 1);
}

TEST_F(UsageStoreTest, SumsReportedCostsOverTheEventsThatHaveOne) {
    UsageEvent reporting = event("a");
    reporting.reportedCostUSD = 0.5;
    EXPECT_EQ(ingest({event("b"), reporting, event("c")}), 3);
    EXPECT_EQ(daily(), std::vector<std::string>{"claude|m|2024-03-10|3|6|9|12|15|18|0.5"});
    reporting.dedupKey = "d";
    reporting.reportedCostUSD = 0.25;
    ingest({reporting, event("e")});
    EXPECT_EQ(daily(), std::vector<std::string>{"claude|m|2024-03-10|5|10|15|20|25|30|0.75"});
}

TEST_F(UsageStoreTest, KeepsTheEarliestDayOfASession) {
    ingest({event("a", "2024-03-12T00:00:00Z"), event("b", "2024-03-11T00:00:00Z")});
    ingest({event("c", "2024-03-10T00:00:00Z")});
    ingest({event("d", "2024-03-14T00:00:00Z")});
    EXPECT_EQ(rows("SELECT * FROM sessions"), std::vector<std::string>{"claude|s|2024-03-10"});
}

TEST_F(UsageStoreTest, PutsEventsOnTheCalendarsDays) {
    const Calendar saoPaulo =
        Calendar::named("America/Sao_Paulo").value(); // its day of 2018-11-04 has no midnight
    const std::vector<UsageEvent> events{
        event("a", "2018-11-04T02:59:59.999Z"), event("b", "2018-11-04T03:00:00Z"),
        event("c", "2018-11-05T01:59:59Z"), event("d", "2018-11-05T02:00:00Z")};
    EXPECT_EQ(store->ingest(events, saoPaulo), 4);
    EXPECT_THAT(rows("SELECT key, day FROM seen ORDER BY key"),
                ElementsAre("a|2018-11-03", "b|2018-11-04", "c|2018-11-04", "d|2018-11-05"));
}

TEST_F(UsageStoreTest, KeepsCursorsAndLimits) {
    EXPECT_FALSE(store->cursor("/a").has_value());
    const FileCursor first{"/a\n\xff", 7, 9, {{"provider", "claude"}}};
    store->save(first);
    EXPECT_EQ(store->cursor(first.path), first);
    const std::vector<FileCursor> both{{first.path, 7, 10, {}}, {"/b", 1, 2, {}}};
    store->save(both);
    EXPECT_EQ(store->cursor(first.path), both[0]);
    EXPECT_EQ(store->cursorTexts().size(), 2U);

    EXPECT_FALSE(store->limits(ProviderID::codex).has_value());
    ProviderLimits limits;
    limits.windows = {{"session",
                       "Session",
                       0.5,
                       18000.0,
                       {},
                       LimitSource::local(dateFromUnixSeconds(1.7e9 + 0.1))}};
    limits.fetchedAt = dateFromUnixSeconds(1773147600.123);
    store->setLimits(limits, ProviderID::codex);
    EXPECT_EQ(store->limits(ProviderID::codex), limits);
    EXPECT_FALSE(store->limits(ProviderID::claude).has_value());
    Inspector(file).execute("UPDATE limits SET json = '{}'");
    EXPECT_THROW(store->limits(ProviderID::codex), DecodingError);
}

TEST_F(UsageStoreTest, TellsWhereACursorRowStandsWithoutDecodingIt) {
    for (const std::string& path :
         {std::string("/a"), std::string(R"(/odd","inode":8,"offset":9,"context":{)"),
          std::string("/ends with a backslash\\"), std::string("/\xff\n")}) {
        store->save(FileCursor{path, 7, 9, {{"provider", "claude"}}});
        const std::string row = store->cursorTexts().at(path);
        EXPECT_TRUE(standsAt(row, 7, 9)) << row;
        for (const auto& [inode, offset] : {std::pair{8, 9}, {7, 90}, {7, 0}, {70, 9}})
            EXPECT_FALSE(
                standsAt(row, static_cast<std::uint64_t>(inode), static_cast<std::int64_t>(offset)))
                << row;
        EXPECT_FALSE(standsAt(row.substr(0, row.size() - 1), 7, 9)) << "cut";
    }
}

TEST_F(UsageStoreTest, ResetsTheCursorsOfOneProvider) {
    const std::vector<FileCursor> cursors{{"/a", 1, 1, {{"provider", "claude"}}},
                                          {"/b", 1, 1, {{"provider", "codex"}}},
                                          {"/c", 1, 1, {}}};
    store->save(cursors);
    Inspector(file).execute("INSERT INTO cursors VALUES('/broken', '{\"provider\":\"claude\"')");
    store->resetCursors(ProviderID::claude);
    EXPECT_THAT(rows("SELECT path FROM cursors ORDER BY path"), ElementsAre("/b", "/broken", "/c"));
    EXPECT_THROW(store->cursor("/broken"), DecodingError);
}

TEST_F(UsageStoreTest, PrunesDaysBeforeTheCutOff) {
    std::vector<UsageEvent> events{event("a", "2024-03-09T23:59:59Z"),
                                   event("b", "2024-03-10T00:00:00Z")};
    events[1].sessionID = "later";
    ingest(events);
    store->prune(*parseISO8601("2024-03-10T18:00:00Z"), utc);
    EXPECT_EQ(rows("SELECT day FROM daily"), std::vector<std::string>{"2024-03-10"});
    EXPECT_EQ(rows("SELECT session_id FROM sessions"), std::vector<std::string>{"later"});
    EXPECT_EQ(rows("SELECT key FROM seen"), std::vector<std::string>{"b"});
}

TEST_F(UsageStoreTest, LastsFromOneOpeningToTheNext) {
    ingest({event("a")});
    store = nullptr;
    store = std::make_unique<UsageStore>(file);
    EXPECT_EQ(ingest({event("a")}), 0);
    EXPECT_EQ(rows("PRAGMA user_version"), std::vector<std::string>{"1"});
    EXPECT_EQ(rows("PRAGMA journal_mode"), std::vector<std::string>{"wal"});
    EXPECT_EQ(store->integrity(), "ok");
    EXPECT_EQ(store->models(), std::vector<std::string>{"m"});
}

TEST_F(UsageStoreTest, IsPrivateToItsUser) {
    ingest({event("a")});
    namespace fs = std::filesystem;
    EXPECT_EQ(fs::status(file.parent_path()).permissions(), fs::perms::owner_all);
    for (const fs::directory_entry& entry : fs::directory_iterator(file.parent_path()))
        EXPECT_EQ(entry.status().permissions(), fs::perms::owner_read | fs::perms::owner_write)
            << entry.path();
}

TEST_F(UsageStoreTest, LivesInMemoryWhenAskedTo) {
    const std::filesystem::path memory = directory / ":memory:";
    {
        UsageStore temporary(memory);
        const std::vector<UsageEvent> events{event("a")};
        EXPECT_EQ(temporary.ingest(events, utc), 1);
    }
    const std::vector<UsageEvent> events{event("a")};
    EXPECT_EQ(UsageStore(memory).ingest(events, utc), 1);
    EXPECT_FALSE(std::filesystem::exists(memory));
}

TEST_F(UsageStoreTest, ServesSeveralThreads) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < 50; ++i) {
                ingest({event(std::to_string(t) + "/" + std::to_string(i)),
                        event("shared" + std::to_string(i))});
                store->save(FileCursor{"/" + std::to_string(t), 1, i, {}});
                store->cursorTexts();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(rows("SELECT COUNT(*) FROM seen"), std::vector<std::string>{"250"});
    EXPECT_EQ(rows("SELECT uncached FROM daily"), std::vector<std::string>{"250"});
}

TEST_F(UsageStoreTest, StopsTheProgramRatherThanStoreAWrappedSum) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    UsageEvent huge = event("a");
    huge.tokens = {most, 0, 0, 0, 0, 0};
    ingest({huge});
    EXPECT_EXIT(ingest({event("b")}), ::testing::ExitedWithCode(1),
                "exceeds 64 bits \\(claude, .*, 20..-..-..\\)");
    EXPECT_EQ(rows("SELECT key FROM seen"), std::vector<std::string>{"a"});
}

} // namespace
} // namespace tokwatch

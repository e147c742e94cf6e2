#include "TokwatchCore/Store/UsageStore.h"

#include "Tests/Support/OrdinaryUser.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/Testing.h"
#include "TokwatchCore/Store/DatabaseFile.h"
#include "TokwatchCore/Store/NoLockWaits.h"
#include "TokwatchCore/Store/SQLite.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <cstdio>
#include <thread>

namespace tokwatch::testing {

namespace fs = std::filesystem;

UsageEvent event(const std::string& key, const char* when = "2024-03-10T12:00:00Z",
                 std::int64_t input = 1) {
    return {
        ProviderID::claude, "m", "s", key, *parseISO8601(when), TokenCounts{input, 2, 3, 4, 5, 6},
        std::nullopt};
}

std::vector<UsageEvent> events(int first, int count) {
    std::vector<UsageEvent> batch;
    for (int i = first; i < first + count; ++i)
        batch.push_back(event("key" + std::to_string(i)));
    return batch;
}

int openFailure(const fs::path& path) {
    try {
        const UsageStore store(path, std::chrono::milliseconds{0});
    } catch (const UsageStoreError& error) {
        EXPECT_FALSE(error.message.empty());
        return error.code;
    }
    return SQLITE_OK;
}

struct UsageStoreTest : Test {
    std::int64_t ingest(const std::vector<UsageEvent>& batch) { return store->ingest(batch, utc); }
    /// Does it behind the store's back; the first column of the rows.
    std::vector<std::string> rows(const char* sql) const {
        std::vector<std::string> found;
        sqlite::Connection db(file.string());
        sqlite::Statement& statement = db.statement(sql);
        while (statement.step())
            found.push_back(statement.text(0));
        return found;
    }

    TemporaryDirectory home;
    fs::path file = home / "Tokwatch/usage.sqlite";
    Calendar utc = Calendar::utc();
    std::unique_ptr<UsageStore> store = std::make_unique<UsageStore>(file);
};

TEST_F(UsageStoreTest, CountsEveryKeyOnceWithTheCostsThatAreReported) {
    using namespace std::string_literals;
    EXPECT_EQ(ingest({}), 0);
    const std::vector<UsageEvent> batch{event("b"), event("a"),
                                        event("b", "2024-03-11T00:00:00Z", 100)};
    EXPECT_EQ(ingest(batch), 2);
    EXPECT_EQ(ingest(batch), 0);
    const char* const daily =
        "SELECT json_array(model, day, uncached, cache_read, w5m, w1h, output, reasoning, reported_usd) FROM daily";
    EXPECT_THAT(rows(daily), ElementsAre(R"(["m","2024-03-10",2,4,6,8,10,12,null])"));
    UsageEvent reporting = event("c");
    reporting.reportedCostUSD = 0.5;
    EXPECT_EQ(ingest({reporting}), 1);
    EXPECT_THAT(rows(daily), ElementsAre(R"(["m","2024-03-10",3,6,9,12,15,18,0.5])"));
    EXPECT_EQ(ingest({event("k\0b"s), event("k\0a"s), event("k"), event("k\0b"s)}), 3);
    EXPECT_EQ(ingest({event("k\0a"s), event("k\0c"s)}), 1) << "they differ behind a NUL";
    EXPECT_EQ(store->models(), std::vector<std::string>{"m"});
}

TEST_F(UsageStoreTest, KeepsCursorsAndLimits) {
    const FileCursor first{"/a\n\xff", 7, 9, {{"provider", "claude"}}};
    store->save(first);
    EXPECT_EQ(store->cursor(first.path), first);
    const std::vector<FileCursor> both{{first.path, 7, 10, {}}, {"/b", 1, 2, {}}};
    EXPECT_TRUE(store->save(both, store->generation()));
    EXPECT_EQ(store->cursor(first.path), both[0]);
    EXPECT_EQ(store->cursorTexts().size(), 2U);

    const Date then = dateFromUnixSeconds(1773147600.123);
    ProviderLimits limits{"Max 5x",
                          {{"session", "Session", 0.25, 18000.0, then, LimitSource::live()},
                           {"weekly", "Weekly", 1, {}, {}, LimitSource::local(then)}},
                          Credits{"Extra usage", std::nullopt, 12.34, 50.0, false},
                          {},
                          then};
    for (const ProviderStatus status : allCases<ProviderStatus>) {
        limits.status = status;
        store->setLimits(limits, ProviderID::codex);
        EXPECT_EQ(store->limits(ProviderID::codex), limits);
    }
    EXPECT_FALSE(store->limits(ProviderID::claude).has_value());
    rows("UPDATE limits SET json = '{}'");
    EXPECT_THROW(store->limits(ProviderID::codex), DecodingError);
}

TEST_F(UsageStoreTest, TellsWhereACursorRowStandsWithoutDecodingIt) {
    for (const std::string& path :
         {std::string("/a"), std::string(R"(/odd","inode":8,"offset":9,"context":{)"),
          std::string("/ends with a backslash\\"), std::string("/\xff\n")}) {
        store->save(FileCursor{path, 7, 9, {{"provider", "claude"}}});
        const std::string row = store->cursorTexts().at(path);
        EXPECT_TRUE(standsAt(row, 7, 9)) << row;
        for (const auto& [inode, offset] : {std::pair{8U, 9}, {7U, 90}, {7U, 0}, {70U, 9}})
            EXPECT_FALSE(standsAt(row, inode, offset)) << row;
        EXPECT_FALSE(standsAt(row.substr(0, row.size() - 1), 7, 9)) << "cut";
    }
}

TEST_F(UsageStoreTest, ResetsTheCursorsOfOneProvider) {
    const std::vector<FileCursor> cursors{{"/a", 1, 1, {{"provider", "claude"}}},
                                          {"/b", 1, 1, {{"provider", "codex"}}},
                                          {"/c", 1, 1, {}}};
    EXPECT_TRUE(store->save(cursors, store->generation()));
    rows("INSERT INTO cursors VALUES('/broken', '{\"provider\":\"claude\"')");
    store->resetCursors(ProviderID::claude);
    EXPECT_THAT(rows("SELECT path FROM cursors ORDER BY path"), ElementsAre("/b", "/broken", "/c"));
    EXPECT_THROW(store->cursor("/broken"), DecodingError);
}

TEST_F(UsageStoreTest, PrunesDaysBeforeTheCutOff) {
    std::vector<UsageEvent> events{event("a", "2024-03-09T23:59:59Z"),
                                   event("b", "2024-03-10T00:00:00Z")};
    events[1].sessionID = "later";
    for (const char* form : {"as this version makes it", "as earlier versions did"}) {
        EXPECT_EQ(ingest(events), 2) << form;
        EXPECT_EQ(ingest(events), 0) << form;
        for (int i = 0; i < 2; ++i)
            store->prune(*parseISO8601("2024-03-10T18:00:00Z"), utc);
        EXPECT_EQ(rows("SELECT day FROM daily"), std::vector<std::string>{"2024-03-10"});
        EXPECT_EQ(rows("SELECT session_id FROM sessions"), std::vector<std::string>{"later"});
        EXPECT_EQ(rows("SELECT key FROM seen"), std::vector<std::string>{"b"}) << form;
        rows("DROP TABLE seen");
        rows("CREATE TABLE seen(key TEXT PRIMARY KEY, day TEXT NOT NULL)");
        rows("CREATE INDEX seen_day ON seen(day)");
        rows("DELETE FROM daily");
    }
}

TEST_F(UsageStoreTest, ServesSeveralThreads) {
    std::vector<std::jthread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([this, t] {
            for (int i = 0; i < 50; ++i) {
                ingest({event(std::to_string(t) + "/" + std::to_string(i)),
                        event("shared" + std::to_string(i))});
                store->save(FileCursor{"/" + std::to_string(t), 1, i, {}});
                store->cursorTexts();
            }
        });
    threads.clear();
    EXPECT_THAT(rows("SELECT uncached FROM daily"), ElementsAre("250"));
}

TEST_F(UsageStoreTest, SaysWhyTheFileCannotBeOpenedOrWritten) {
    ingest(events(0, 3));
    store = nullptr;
    home.write("file", "");
    EXPECT_EQ(openFailure(home / "file/usage.sqlite"), SQLITE_CANTOPEN);
    EXPECT_EQ(openFailure(home.path()), SQLITE_CANTOPEN);
    ASSERT_EQ(::mkfifo((home / "pipe").c_str(), 0600), 0);
    EXPECT_THROW(UsageStore::readOnly(home / "pipe"), UsageStoreError) << "and does not wait";
    fs::create_symlink("loop", home / "loop");
    EXPECT_EQ(openFailure(home / "loop"), SQLITE_CANTOPEN);
    EXPECT_EQ(openFailure(home.write("broken.sqlite", std::string(5000, 'x'))), SQLITE_NOTADB);
    sqlite::Connection((home / "others.sqlite").string()).execute("CREATE TABLE mine(a)");
    EXPECT_EQ(openFailure(home / "others.sqlite"), SQLITE_NOTADB) << "another program's";
    fs::permissions(home.path(), fs::perms{0755});
    fs::permissions(file.parent_path(), fs::perms{0555});
    fs::permissions(file, fs::perms{0444});
    {
        const OrdinaryUser user;
        EXPECT_EQ(openFailure(file), SQLITE_READONLY);
        EXPECT_EQ(openFailure(file.parent_path() / "another.sqlite"), SQLITE_CANTOPEN);
        EXPECT_EQ(UsageStore::readOnly(file)->newestDay(), "2024-03-10");
    }
    fs::permissions(file.parent_path(), fs::perms::owner_all);
    fs::permissions(file, fs::perms{0600});
    EXPECT_EQ(UsageStore(file).ingest(events(0, 4), utc), 1) << "nothing may be lost";
}

TEST_F(UsageStoreTest, IsWrittenIntoNoSideFileOfAnotherUser) {
    ingest(events(0, 3));
    store = nullptr;
    const auto give = [](const fs::path& what, uid_t owner) {
        return ::lchown(what.c_str(), owner, owner) == 0;
    };
    if (!give(home.write("theirs", ""), 1234)) GTEST_SKIP() << "only the administrator";
    for (const std::string suffix : {"-wal", "-shm", "-journal"}) {
        const fs::path side = file.string() + suffix;
        const auto isRefused = [&] {
            bool isRead = true;
            try {
                UsageStore::readOnly(file);
            } catch (const UsageStoreError&) {
                isRead = false;
            }
            const bool isOpened = openFailure(file) == SQLITE_OK;
            EXPECT_EQ(isRead, isOpened) << side;
            fs::remove(side);
            return !isOpened;
        };
        for (const uid_t user : {0U, 1234U}) {
            give(home.write("Tokwatch/usage.sqlite" + suffix, ""), user);
            EXPECT_EQ(isRefused(), user != 0) << side << " of " << user;
        }
        fs::create_symlink(home / "theirs", side);
        EXPECT_TRUE(isRefused()) << side;
        fs::create_hard_link(home.write("victim", ""), side);
        EXPECT_FALSE(isRefused()) << "a copy of the user's own";
        fs::permissions(file.parent_path(), fs::perms{01777});
        fs::create_hard_link(home / "victim", side);
        EXPECT_TRUE(isRefused()) << side;
        fs::permissions(file.parent_path(), fs::perms{0700});
        // In a user's directory the administrator finds what that user's crash left.
        give(file.parent_path(), 1234);
        give(home.write("Tokwatch/usage.sqlite" + suffix, ""), 1234);
        EXPECT_FALSE(isRefused()) << side;
        give(file.parent_path(), 0);
    }
}

TEST_F(UsageStoreTest, SaysThatAnotherProcessHoldsTheLock) {
    ingest(events(0, 3));
    store = std::make_unique<UsageStore>(file, std::chrono::milliseconds{0});
    sqlite::Connection other(file.string());
    other.execute("BEGIN IMMEDIATE");
    EXPECT_THAT([this] { ingest(events(0, 9)); },
                Throws<UsageStoreError>(Property(&UsageStoreError::isLocked, true)));
    {
        UsageStore patient(file, std::chrono::hours{1});
        const NoLockWaits hold;
        EXPECT_THAT([&] { patient.setLimits({}, ProviderID::codex); },
                    Throws<UsageStoreError>(Property(&UsageStoreError::isLocked, true)));
    }
    EXPECT_THROW(store->save(FileCursor{"/a", 1, 1, {}}), UsageStoreError);
    // Readers are not held up, and opening a database that exists writes nothing.
    EXPECT_FALSE(store->cursor("/a").has_value());
    EXPECT_EQ(openFailure(file), SQLITE_OK);
    other.execute("ROLLBACK");
    EXPECT_EQ(ingest(events(0, 9)), 6);
}

/// Whether another program finds so many keys in the file. It opens and closes it, which deletes
/// the write-ahead log where it finds nobody else's lock.
bool anotherProcessFinds(int keys, const fs::path& file) {
    const std::string query = "sqlite3 '" + file.string() + "' 'SELECT COUNT(*) FROM seen'";
    return std::system(("test $(" + query + ") = " + std::to_string(keys)).c_str()) == 0;
}

TEST_F(UsageStoreTest, LosesNothingToOtherProcessesThatOpenAndCloseTheFile) {
    for (int round = 0; round < 3; ++round) {
        store->ingest(events(round * 10, 10), utc);
        // The locks of a process on a file are gone once it closes any descriptor of that file.
        { UsageStore second(file); }
        EXPECT_TRUE(anotherProcessFinds((round + 1) * 10, file));
        EXPECT_TRUE(fs::exists(file.string() + "-wal"));
    }
    EXPECT_NO_THROW(store->requireSound());

    // Somebody removed the file alone: the side files are those of the store that is open.
    fs::remove(file);
    EXPECT_TRUE(store->isDetached());
    EXPECT_TRUE(store->reattach());
    ingest(events(0, 10));
    EXPECT_TRUE(anotherProcessFinds(10, file));
    EXPECT_TRUE(fs::exists(file.string() + "-wal"));

    // Or moved a backup into its place, which has nothing of what they hold.
    const fs::path backup = home / "backup/usage.sqlite";
    UsageStore(backup).ingest(events(0, 5), utc);
    ingest(events(100, 200));
    fs::rename(backup, file);
    EXPECT_TRUE(store->reattach());
    EXPECT_TRUE(anotherProcessFinds(5, file));
    EXPECT_NO_THROW(store->requireSound());
}

TEST_F(UsageStoreTest, WaitsForOthersThatOpenANewFileAtTheSameTime) {
    static int tries = 0; // switching the journal's mode fails at once, whatever the patience
    const auto prepare = [](sqlite::Connection&) {
        if (++tries < 3) throw UsageStoreError(SQLITE_BUSY, "database is locked");
    };
    sqlite::openTables(file, std::chrono::hours(1), {1, "", prepare});
    EXPECT_EQ(tries, 3);
    for (int round = 0; round < 4; ++round) {
        const fs::path fresh = home / (std::to_string(round) + "/usage.sqlite");
        std::vector<std::jthread> openers;
        for (int i = 0; i < 12; ++i)
            openers.emplace_back(
                [&, i] { EXPECT_NO_THROW(UsageStore(fresh).ingest(events(i, 1), utc)); });
        openers.clear();
        EXPECT_EQ(UsageStore(fresh).ingest(events(0, 13), utc), 1);
    }
}

TEST_F(UsageStoreTest, MovesFromMemoryToTheFileOnceThatCanBeOpened) {
    const fs::path later = home.write("data", "in the way").parent_path() / "data/u";
    const std::shared_ptr<UsageStore> memory = UsageStore::temporary(later);
    const ProviderLimits limits{{}, {}, {}, ProviderStatus::ok, dateFromUnixSeconds(1'000)};
    memory->setLimits(limits, ProviderID::codex);
    EXPECT_THROW(memory->reattach(), UsageStoreError);
    memory->ingest(events(0, 3), utc);

    fs::remove(home / "data");
    EXPECT_TRUE(memory->reattach());
    EXPECT_FALSE(memory->reattach()) << "it is the one in use";
    EXPECT_EQ(memory->limits(ProviderID::codex), limits);
    EXPECT_EQ(memory->ingest(events(0, 3), utc), 3) << "the file knows none of them";

    fs::rename(home / "data", home / "moved away");
    EXPECT_TRUE(memory->reattach());
    EXPECT_EQ(memory->ingest(events(0, 2), utc), 2);
    EXPECT_EQ(UsageStore(home / "moved away/u").ingest(events(0, 4), utc), 1);
    EXPECT_EQ(UsageStore(later).ingest(events(0, 4), utc), 2);
}

TEST_F(UsageStoreTest, LeavesANewerDatabaseAsItIs) {
    file = home / "newer.sqlite";
    rows("PRAGMA user_version = 7");
    UsageStore newer(file);
    EXPECT_THROW(newer.ingest(events(0, 1), utc), UsageStoreError);
    EXPECT_NO_THROW(newer.requireSound());
}

TEST_F(UsageStoreTest, RollsAWholeBatchBack) {
    ingest(events(0, 10));
    rows("CREATE TRIGGER refuse BEFORE INSERT ON sessions "
         "BEGIN SELECT RAISE(ABORT, 'refused'); END");
    EXPECT_THROW(ingest(events(0, 50)), UsageStoreError);
    rows("DROP TRIGGER refuse");
    EXPECT_EQ(ingest(events(0, 50)), 40) << "nothing of the failed batch may have stayed";
}

} // namespace tokwatch::testing

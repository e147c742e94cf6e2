#include "Tests/Support/OrdinaryUser.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <thread>

namespace tokwatch {
namespace {

using testing::TemporaryDirectory;

std::vector<UsageEvent> events(int first, int count) {
    std::vector<UsageEvent> batch;
    for (int i = first; i < first + count; ++i) {
        batch.push_back({ProviderID::claude, "m", "s", "key" + std::to_string(i),
                         *parseISO8601("2024-03-10T12:00:00Z"), TokenCounts{1, 0, 0, 0, 0, 0},
                         std::nullopt});
    }
    return batch;
}

int openFailure(const std::filesystem::path& path) {
    try {
        const UsageStore store(path, std::chrono::milliseconds{0});
    } catch (const UsageStoreError& error) {
        EXPECT_FALSE(error.message.empty());
        return error.code;
    }
    return SQLITE_OK;
}

TEST(UsageStoreFailure, IsTypedWhenTheFileCannotBeOpened) {
    const TemporaryDirectory home;
    home.write("file", "");
    std::filesystem::create_directory(home / "directory");
    EXPECT_EQ(openFailure(home / "file/usage.sqlite"), SQLITE_CANTOPEN);
    EXPECT_EQ(openFailure(home / "directory"), SQLITE_CANTOPEN);
    ASSERT_EQ(::mkfifo((home / "pipe").c_str(), 0600), 0);
    EXPECT_THROW(UsageStore::readOnly(home / "pipe"), UsageStoreError) << "and does not wait";
    std::filesystem::create_symlink("loop", home / "loop");
    EXPECT_EQ(openFailure(home / "loop"), SQLITE_CANTOPEN);
    EXPECT_EQ(openFailure(home.write("broken.sqlite", std::string(5000, 'x'))), SQLITE_NOTADB);
}

TEST(UsageStoreFailure, IsTypedWhenTheFileCannotBeWritten) {
    namespace fs = std::filesystem;
    const TemporaryDirectory home;
    const fs::path file = home / "store/usage.sqlite";
    UsageStore(file).ingest(events(0, 3), Calendar::utc());
    fs::permissions(home.path(), fs::perms{0755});
    fs::permissions(home / "store", fs::perms{0555});
    fs::permissions(file, fs::perms{0444});
    {
        const testing::OrdinaryUser user;
        EXPECT_EQ(openFailure(file), SQLITE_READONLY);
        EXPECT_EQ(openFailure(home / "store/another.sqlite"), SQLITE_CANTOPEN);
        EXPECT_EQ(UsageStore::readOnly(file)->newestDay(), "2024-03-10");
    }
    fs::permissions(home / "store", fs::perms::owner_all);
    fs::permissions(file, fs::perms{0600});
    EXPECT_EQ(UsageStore(file).ingest(events(0, 4), Calendar::utc()), 1) << "nothing may be lost";
}

TEST(UsageStoreFailure, IsTypedWhileAnotherProcessHoldsTheLock) {
    const TemporaryDirectory home;
    const std::filesystem::path file = home / "usage.sqlite";
    UsageStore store(file, std::chrono::milliseconds{0});
    store.ingest(events(0, 3), Calendar::utc());
    sqlite3* other = nullptr;
    sqlite3_open(file.c_str(), &other);
    sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    const auto failureOf = [](const auto& write) {
        try {
            write();
        } catch (const UsageStoreError& error) {
            EXPECT_TRUE(error.isLocked());
            return error.code;
        }
        return SQLITE_OK;
    };
    EXPECT_EQ(failureOf([&] { store.ingest(events(0, 9), Calendar::utc()); }), SQLITE_BUSY);
    EXPECT_EQ(failureOf([&] { store.save(FileCursor{"/a", 1, 1, {}}); }), SQLITE_BUSY);
    // Readers are not held up, and opening a database that exists writes nothing.
    EXPECT_FALSE(store.cursor("/a").has_value());
    EXPECT_EQ(openFailure(file), SQLITE_OK);
    sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr);
    EXPECT_EQ(store.ingest(events(0, 9), Calendar::utc()), 6);
    sqlite3_close(other);
}

/// What another program makes of the file: it opens and closes it, which deletes the write-ahead
/// log where it finds nobody else's lock.
std::string readByAnotherProcess(const std::filesystem::path& file, const std::string& query) {
    const std::string command = "sqlite3 '" + file.string() + "' '" + query + "'";
    FILE* pipe = ::popen(command.c_str(), "r");
    std::string text;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        text += static_cast<char>(c);
    EXPECT_EQ(::pclose(pipe), 0) << text;
    return text;
}

TEST(UsageStoreFailure, LosesNothingToOtherProcessesThatOpenAndCloseTheFile) {
    const TemporaryDirectory home;
    const std::filesystem::path file = home / "usage.sqlite";
    UsageStore store(file);
    for (int round = 0; round < 3; ++round) {
        store.ingest(events(round * 10, 10), Calendar::utc());
        // The locks of a process on a file are gone once it closes any descriptor of that file.
        { UsageStore second(file); }
        EXPECT_EQ(readByAnotherProcess(file, "SELECT COUNT(*) FROM seen"),
                  std::to_string((round + 1) * 10) + "\n");
        EXPECT_TRUE(std::filesystem::exists(file.string() + "-wal"));
    }
    EXPECT_EQ(store.integrity(), "ok");

    // Somebody removed the file alone: the side files are those of the store that is open.
    std::filesystem::remove(file);
    EXPECT_TRUE(store.isDetached());
    EXPECT_TRUE(store.reattach());
    store.ingest(events(0, 10), Calendar::utc());
    readByAnotherProcess(file, "SELECT COUNT(*) FROM seen");
    EXPECT_TRUE(std::filesystem::exists(file.string() + "-wal"));
}

TEST(UsageStoreFailure, WaitsForOthersThatOpenANewFileAtTheSameTime) {
    const TemporaryDirectory home;
    for (int round = 0; round < 40; ++round) {
        const std::filesystem::path file = home / (std::to_string(round) + "/usage.sqlite");
        std::vector<std::thread> openers;
        for (int i = 0; i < 4; ++i)
            openers.emplace_back([&file, i] {
                EXPECT_NO_THROW(UsageStore(file).ingest(events(i, 1), Calendar::utc()));
            });
        for (std::thread& opener : openers)
            opener.join();
        EXPECT_EQ(UsageStore(file).ingest(events(0, 5), Calendar::utc()), 1);
    }
}

TEST(UsageStoreFailure, MovesFromMemoryToTheFileOnceThatCanBeOpened) {
    const TemporaryDirectory home;
    const std::filesystem::path file = home.write("data", "in the way").parent_path() / "data/u";
    const std::shared_ptr<UsageStore> store = UsageStore::temporary(file);
    ProviderLimits limits;
    limits.fetchedAt = dateFromUnixSeconds(1'000);
    store->setLimits(limits, ProviderID::codex);
    EXPECT_THROW(store->reattach(), UsageStoreError);
    store->ingest(events(0, 3), Calendar::utc());

    std::filesystem::remove(home / "data");
    EXPECT_TRUE(store->reattach());
    EXPECT_FALSE(store->reattach()) << "it is the one in use";
    EXPECT_EQ(store->limits(ProviderID::codex), limits);
    EXPECT_EQ(store->ingest(events(0, 3), Calendar::utc()), 3) << "the file knows none of them";

    std::filesystem::rename(home / "data", home / "moved away");
    EXPECT_TRUE(store->reattach());
    EXPECT_EQ(store->ingest(events(0, 2), Calendar::utc()), 2);
    EXPECT_EQ(UsageStore(home / "moved away/u").ingest(events(0, 4), Calendar::utc()), 1);
    EXPECT_EQ(UsageStore(file).ingest(events(0, 4), Calendar::utc()), 2);
}

TEST(UsageStoreFailure, LeavesANewerDatabaseAsItIs) {
    const TemporaryDirectory home;
    const std::filesystem::path file = home / "usage.sqlite";
    sqlite3* db = nullptr;
    sqlite3_open(file.c_str(), &db);
    sqlite3_exec(db, "CREATE TABLE later(x); PRAGMA user_version = 7", nullptr, nullptr, nullptr);
    sqlite3_close(db);
    UsageStore store(file);
    EXPECT_THROW(store.ingest(events(0, 1), Calendar::utc()), UsageStoreError);
    EXPECT_EQ(store.integrity(), "ok");
}

TEST(UsageStoreFailure, RollsAWholeBatchBack) {
    const TemporaryDirectory home;
    const std::filesystem::path file = home / "usage.sqlite";
    UsageStore store(file);
    store.ingest(events(0, 10), Calendar::utc());
    sqlite3* db = nullptr;
    sqlite3_open(file.c_str(), &db);
    sqlite3_exec(
        db,
        "CREATE TRIGGER refuse BEFORE INSERT ON sessions BEGIN SELECT RAISE(ABORT, 'refused'); END",
        nullptr, nullptr, nullptr);
    try {
        store.ingest(events(0, 50), Calendar::utc());
        ADD_FAILURE() << "the trigger did not fire";
    } catch (const UsageStoreError& error) {
        EXPECT_EQ(error, UsageStoreError(SQLITE_CONSTRAINT, "refused"));
    }
    sqlite3_exec(db, "DROP TRIGGER refuse", nullptr, nullptr, nullptr);
    sqlite3_close(db);
    EXPECT_EQ(store.ingest(events(0, 50), Calendar::utc()), 40)
        << "nothing of the failed batch may have stayed";
}

} // namespace
} // namespace tokwatch

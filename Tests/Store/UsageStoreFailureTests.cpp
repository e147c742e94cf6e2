#include "ISO8601.h"
#include "OrdinaryUser.h"
#include "TemporaryDirectory.h"
#include "UsageStore.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>

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

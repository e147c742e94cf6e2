#include "TokwatchCore/Store/DatabaseFile.h"

#include "Platform/System/OwnLinks.h"
#include "Platform/System/PrivateFiles.h"
#include "TokwatchCore/Store/NoLockWaits.h"
#include "TokwatchCore/Store/UsageStoreError.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <optional>
#include <string>
#include <system_error>
#include <thread>

namespace tokwatch::sqlite {
namespace {

/// A group that may write into the directory is trusted with what is in it.
constexpr mode_t othersMayWrite = 002;

/// Whether nobody but the file's owner can have given it its other names. Whoever else gave it this
/// one chose which file is written into.
bool areOwnersNames(const struct stat& file, const std::filesystem::path& directory) {
    struct stat status = {};
    return ::stat(directory.c_str(), &status) == 0 && status.st_uid == file.st_uid &&
           (status.st_mode & othersMayWrite) == 0;
}

std::optional<uid_t> ownerOf(const std::filesystem::path& file) {
    struct stat status = {};
    if (::lstat(file.c_str(), &status) != 0) return std::nullopt;
    return status.st_uid;
}

/// SQLite opens whatever has the name of a side file: our rows would get into what another user
/// made beforehand, or come from there. Those that a crash left are the user's, or the database's
/// owner's where that is another one who lets others read it.
void refuseAnothersSideFiles(const std::filesystem::path& database) {
    for (const char* suffix : {"-wal", "-shm", "-journal"}) {
        const std::filesystem::path side = database.string() + suffix;
        const auto refuse = [&side](const char* what) {
            throw UsageStoreError(SQLITE_CANTOPEN, side.string() + what);
        };
        struct stat status = {};
        if (::lstat(side.c_str(), &status) != 0) continue;
        if (!S_ISREG(status.st_mode)) refuse(" is not a regular file");
        if (!isTrustedOwner(status.st_uid, side) && ownerOf(database) != status.st_uid)
            refuse(" belongs to another user");
        if (status.st_nlink > 1 && !areOwnersNames(status, side.parent_path()))
            refuse(" may be another user's link");
    }
}

/// The file, made where it does not exist; SQLite's side files take after it. What fails here
/// fails again, with a message, when SQLite opens it; but for what is another user's, which SQLite
/// would open.
std::filesystem::path createFile(const std::filesystem::path& file) {
    std::filesystem::path real = realPath(file);
    try {
        makePrivateDirectory(file.parent_path());
        createPrivately(real);
    } catch (const ForeignFileError& error) {
        throw UsageStoreError(SQLITE_CANTOPEN, error.what());
    } catch (const std::system_error&) {
        // SQLite tells.
    }
    refuseAnothersSideFiles(real);
    return real;
}

bool areMade(Connection& db) {
    return db.number("PRAGMA user_version") >= 1;
}

/// Whoever wants to keep other tables in this place shall not find ours among them. In this order,
/// as another process may be making ours, with their version, at this moment.
void refuseOthersTables(Connection& db) {
    if (db.number("SELECT COUNT(*) FROM sqlite_schema") > 0 && !areMade(db))
        throw UsageStoreError(SQLITE_NOTADB, "the file is another program's database");
}

} // namespace

void makeTables(Connection& db, const Tables& tables) {
    refuseOthersTables(db);
    if (tables.prepare != nullptr) tables.prepare(db);
    if (areMade(db)) return;
    Transaction transaction(db);
    // Another process may have been as quick to find the new file.
    if (areMade(db)) return;
    refuseOthersTables(db);
    db.execute(tables.schema);
    db.execute(("PRAGMA user_version = " + std::to_string(tables.version)).c_str());
    transaction.commit();
}

std::filesystem::path realPath(const std::filesystem::path& file) {
    try {
        return followOwnLinks(file);
    } catch (const std::system_error& error) {
        throw UsageStoreError(SQLITE_CANTOPEN, error.what());
    }
}

std::unique_ptr<Connection> openTables(const std::filesystem::path& file,
                                       std::chrono::milliseconds patience, const Tables& tables) {
    std::error_code none;
    if (std::filesystem::exists(file, none) && !std::filesystem::is_regular_file(file, none))
        throw UsageStoreError(SQLITE_CANTOPEN, "there is something else than a file in its place");
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (true) {
        try {
            auto db = std::make_unique<Connection>(createFile(file).string(), Access::readWrite,
                                                   patience);
            makeTables(*db, tables);
            return db;
        } catch (const UsageStoreError& error) {
            // Switching the journal's mode gives up at once where another process does the same.
            if (!error.isLocked() || NoLockWaits::areInForce() ||
                std::chrono::steady_clock::now() >= deadline)
                throw;
            std::this_thread::sleep_for(std::chrono::milliseconds{5});
        }
    }
}

std::unique_ptr<Connection> openFileForReading(const std::filesystem::path& file,
                                               std::chrono::milliseconds patience) {
    const std::filesystem::path real = realPath(file);
    std::error_code none;
    if (std::filesystem::exists(real, none) && !std::filesystem::is_regular_file(real, none))
        throw UsageStoreError(SQLITE_CANTOPEN, real.string() + " is not a regular file");
    refuseAnothersSideFiles(real);
    return openForReading(real.string(), patience);
}

} // namespace tokwatch::sqlite

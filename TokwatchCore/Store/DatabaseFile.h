#pragma once

#include "TokwatchCore/Store/SQLite.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>

/// Databases of ours as files. Failures are UsageStoreErrors.
namespace tokwatch::sqlite {

/// Where the file really is. Refuses to follow another user's links, and such as lead in a circle.
std::filesystem::path realPath(const std::filesystem::path& file);

/// The tables of a database, and the version that it notes of them.
struct Tables {
    std::int32_t version = 0;
    const char* schema;
    void (*prepare)(Connection& db) = nullptr; ///< sets what a connection, or a new file, needs
};

/// Makes the tables where they are missing. Throws UsageStoreError where there are others, which
/// are another program's.
void makeTables(Connection& db, const Tables& tables);

/// Opens a database for writing that holds these tables, made where they are missing, private to
/// the user where the file is new. Others that do the same, or hold its lock, are waited for as
/// long as `patience`. Anything but a regular file is refused, and so is a database of another
/// program's, and one beside which another user made a side file of SQLite's.
std::unique_ptr<Connection> openTables(const std::filesystem::path& file,
                                       std::chrono::milliseconds patience, const Tables& tables);

/// What a sound database holds where it cannot be written. Anything but a regular file is refused,
/// as a pipe would be waited for, and another user's side file beside it.
std::unique_ptr<Connection> openFileForReading(const std::filesystem::path& file,
                                               std::chrono::milliseconds patience);

} // namespace tokwatch::sqlite

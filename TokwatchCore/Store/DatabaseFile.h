#pragma once

#include "TokwatchCore/Store/SQLite.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

/// Databases of ours as files. Failures are UsageStoreErrors.
namespace tokwatch::sqlite {

/// Where the file really is. Refuses to follow another user's links, and links that lead nowhere.
std::filesystem::path realPath(const std::filesystem::path& file);

/// Opens the database for writing, made private to the user where it is new, and has it prepared:
/// its schema made, its settings set. Others that do the same, or hold its lock, are waited for as
/// long as `patience`.
std::unique_ptr<Connection> openFile(const std::filesystem::path& file,
                                     std::chrono::milliseconds patience,
                                     const std::function<void(Connection&)>& prepare);

/// The tables of a database, and the version that it notes of them.
struct Tables {
    std::int32_t version = 0;
    const char* schema;
};

/// Opens a database for writing that holds these tables, made where they are missing. Anything but
/// a regular file is refused, and so is a database of another program's.
std::unique_ptr<Connection> openTables(const std::filesystem::path& file,
                                       std::chrono::milliseconds patience, const Tables& tables);

/// What a sound database holds where it cannot be written. Anything but a regular file is refused;
/// a pipe would be waited for.
std::unique_ptr<Connection> openFileForReading(const std::filesystem::path& file,
                                               std::chrono::milliseconds patience);

} // namespace tokwatch::sqlite

#pragma once

#include "TokwatchCore/Store/SQLite.h"

#include <chrono>
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

/// What a sound database holds where it cannot be written. Anything but a regular file is refused;
/// a pipe would be waited for.
std::unique_ptr<Connection> openFileForReading(const std::filesystem::path& file,
                                               std::chrono::milliseconds patience);

} // namespace tokwatch::sqlite

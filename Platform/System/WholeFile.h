#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace tokwatch {

/// The contents of a regular file of at most `limit` bytes. Absent for whatever cannot be read
/// whole: no file, a directory, a pipe (which is not waited for), an I/O error, more than that.
std::optional<std::string> readWholeFile(const std::filesystem::path& file, std::size_t limit);

} // namespace tokwatch

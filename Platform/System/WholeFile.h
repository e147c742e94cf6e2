#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace tokwatch {

/// The contents of a regular file of at most `limit` bytes. Absent for whatever cannot be read
/// whole: no file, a directory, a pipe (which is not waited for), an I/O error, more than that.
/// Then `obstacle` is the system's error; EINVAL where the file is no regular one, and EFBIG where
/// it is too large.
std::optional<std::string> readWholeFile(const std::filesystem::path& file, std::size_t limit,
                                         std::error_code& obstacle);
std::optional<std::string> readWholeFile(const std::filesystem::path& file, std::size_t limit);

} // namespace tokwatch

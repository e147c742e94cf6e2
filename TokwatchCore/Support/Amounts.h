#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tokwatch {

/// "512 B", "1.2 MB", "3.4 GB": decimal units, as file managers show them.
std::string formatBytes(std::int64_t bytes);

/// "1 file", "3 files".
std::string counted(std::int64_t count, std::string_view noun);

} // namespace tokwatch

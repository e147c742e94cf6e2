#pragma once

#include <cstdint>
#include <string>

namespace tokwatch {

/// "512 B", "1.2 MB", "3.4 GB": decimal units, as file managers show them.
std::string formatBytes(std::int64_t bytes);

} // namespace tokwatch

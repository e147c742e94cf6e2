#pragma once

#include <string_view>

namespace tokwatch {

/// As it is shown where nothing else is known.
inline constexpr std::string_view applicationName = "Tokwatch";

/// "1.0.0"
std::string_view applicationVersion();

} // namespace tokwatch

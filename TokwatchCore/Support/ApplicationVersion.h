#pragma once

#include <string_view>

namespace tokwatch {

/// "1.0.0"
std::string_view applicationVersion();

} // namespace tokwatch

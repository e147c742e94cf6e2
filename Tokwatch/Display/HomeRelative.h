#pragma once

#include <string>
#include <string_view>

namespace tokwatch {

/// A path as people read it: "~/src/app" below the home directory, else as it is.
std::string homeRelative(std::string_view path, std::string_view home);

} // namespace tokwatch

#pragma once

#include <filesystem>
#include <string>

namespace tokwatch {

/// A path as people read it: "~/.claude/projects" below the home directory, else as it is.
std::string homePath(const std::filesystem::path& path, const std::filesystem::path& home);

} // namespace tokwatch

#pragma once

#include <QString>

#include <filesystem>

namespace tokwatch {

/// A path as people read it: "~/.claude/projects" below the home directory, else as it is.
QString homePath(const std::filesystem::path& path, const std::filesystem::path& home);

} // namespace tokwatch

#pragma once

#include <string>
#include <string_view>

namespace tokwatch {

/// The project that somebody works on in this directory: the directory itself, or the repository
/// that it is a worktree of where the path tells so, as with "/src/app/.claude/worktrees/fix",
/// "/src/app/.worktrees/fix/lib" and "/src/app.worktrees/fix". Empty for what is no absolute path.
/// `home`: no repository; worktrees of many that lie right below it stay apart.
std::string projectOf(std::string_view directory, std::string_view home);

} // namespace tokwatch

#include "Tokwatch/Report/ProjectPath.h"

#include <filesystem>

namespace tokwatch {
namespace {

/// "app" of "app.worktrees"; empty for other names.
std::string_view repositoryBeside(std::string_view name) {
    constexpr std::string_view ending = ".worktrees";
    return name.ends_with(ending) ? name.substr(0, name.size() - ending.size())
                                  : std::string_view();
}

/// Without a separator at its end.
std::filesystem::path normal(std::string_view text) {
    const std::filesystem::path path = std::filesystem::path(text).lexically_normal();
    return path.has_filename() || !path.has_relative_path() ? path : path.parent_path();
}

bool isRepository(const std::filesystem::path& path, std::string_view home) {
    return path.has_relative_path() && path != normal(home);
}

} // namespace

std::string projectOf(std::string_view directory, std::string_view home) {
    if (!directory.starts_with('/')) return {};
    const std::filesystem::path path = normal(directory);
    std::filesystem::path above;
    for (auto part = path.begin(); part != path.end(); ++part) {
        const bool isLast = std::next(part) == path.end();
        const std::string& name = part->native();
        if (!isLast && (name == "worktrees" || name == ".worktrees")) {
            // Tools keep theirs in a hidden folder of the repository: ".claude", ".git".
            const bool isHidden = above.filename().native().starts_with('.');
            const std::filesystem::path repository = isHidden ? above.parent_path() : above;
            if (isRepository(repository, home)) return repository.string();
        }
        if (const std::string_view beside = repositoryBeside(name); !isLast && !beside.empty())
            return (above / beside).string();
        above /= *part;
    }
    return path.string();
}

} // namespace tokwatch

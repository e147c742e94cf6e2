#include "Tokwatch/Watching/DirectoryWatcher.h"

#include <algorithm>
#include <string_view>
#include <system_error>
#include <unordered_set>

namespace tokwatch {
namespace {

/// As the stream reports it: what exists of the path resolved, the rest as given.
std::string resolved(const std::filesystem::path& path) {
    std::error_code error;
    const std::filesystem::path real = std::filesystem::weakly_canonical(path, error);
    return error ? path.string() : real.string();
}

std::string_view withoutTrailingSlash(std::string_view path) {
    if (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
    return path;
}

bool isBelow(std::string_view root, std::string_view path) {
    if (root == "/") return path.starts_with('/');
    return path.starts_with(root) && (path.size() == root.size() || path[root.size()] == '/');
}

} // namespace

DirectoryWatcher::DirectoryWatcher(std::vector<std::filesystem::path> watched,
                                   Seconds coalescingLatency, OnChange receiver,
                                   OpenFileEventStream openStream)
    : paths(std::move(watched)), latency(coalescingLatency), onChange(std::move(receiver)),
      open(std::move(openStream)) {}

DirectoryWatcher::~DirectoryWatcher() {
    stop();
}

void DirectoryWatcher::start() {
    if (isRunning() || paths.empty()) return;
    stream.reset();
    std::vector<std::string> watched;
    for (const std::filesystem::path& path : paths)
        watched.push_back(path.string());
    stream = open(watched, latency, [this](const std::vector<FileEvent>& batch) { handle(batch); });
}

void DirectoryWatcher::stop() {
    stream.reset();
}

void DirectoryWatcher::handle(const std::vector<FileEvent>& batch) const {
    // Anew each time: links may lead elsewhere since the last.
    std::vector<std::string> roots;
    for (const std::filesystem::path& path : paths)
        roots.emplace_back(withoutTrailingSlash(resolved(path)));
    const auto isBelowRoots = [&roots](std::string_view path) {
        return std::ranges::any_of(roots,
                                   [path](std::string_view root) { return isBelow(root, path); });
    };
    std::vector<std::string> changed;
    std::unordered_set<std::string_view> seen;
    for (const FileEvent& event : batch)
        if (isBelowRoots(withoutTrailingSlash(event.path)) && seen.insert(event.path).second)
            changed.push_back(event.path);
    if (!changed.empty()) onChange(std::move(changed));
}

} // namespace tokwatch

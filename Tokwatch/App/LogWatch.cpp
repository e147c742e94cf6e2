#include "Tokwatch/App/LogWatch.h"

#include "Tokwatch/App/MainThread.h"

#include <QPointer>

#include <sys/stat.h>

#include <algorithm>
#include <iterator>
#include <system_error>
#include <utility>

namespace tokwatch {
namespace {

constexpr Seconds latency{2};

} // namespace

LogWatch::LogWatch(ProviderLocations places, LogOwner owner, OpenFileEventStream openStream,
                   std::function<void(const IndexScope&)> call)
    : locations(std::move(places)), logOwner(std::move(owner)), open(std::move(openStream)),
      onChange(std::move(call)) {}

void LogWatch::begin() {
    const std::vector<std::filesystem::path> roots = locations.allLogRoots();
    std::vector<std::optional<Place>> places;
    std::ranges::transform(roots, std::back_inserter(places), placeOf);
    if (isRunning() && places == watchedPlaces) return;
    const QPointer<LogWatch> self(this);
    // The new watch begins before the old one ends, so that no change falls between them.
    auto next = std::make_unique<DirectoryWatcher>(
        roots, latency,
        [self](std::vector<std::string> paths) {
            onMainThread([self, paths = std::move(paths)] {
                if (self) self->pathsChanged(paths);
            });
        },
        open);
    next->start();
    watcher = std::move(next);
    watchedPlaces = std::move(places);
}

void LogWatch::end() {
    watcher.reset();
    watchedPlaces.clear();
}

std::optional<LogWatch::Place> LogWatch::placeOf(const std::filesystem::path& root) {
    std::error_code failure;
    std::filesystem::path real = std::filesystem::canonical(root, failure);
    struct stat status {};
    if (failure || ::stat(real.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
        return std::nullopt;
    return Place{std::move(real), status.st_dev, status.st_ino};
}

void LogWatch::pathsChanged(const std::vector<std::string>& paths) const {
    std::vector<std::string> logs;
    for (const std::string& path : paths) {
        std::error_code ignored;
        if (logOwner(path))
            logs.push_back(path);
        else if (std::filesystem::is_directory(path, ignored))
            return onChange({});
    }
    if (!logs.empty()) onChange(logs);
}

} // namespace tokwatch

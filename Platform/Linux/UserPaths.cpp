#include "Platform/Linux/UserPaths.h"

#include "Platform/System/Places.h"
#include "TokwatchCore/Store/SnapshotStore.h"

#include <cstdlib>

namespace tokwatch {
namespace {

std::filesystem::path variable(const char* name) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the main thread alone asks and changes.
    const char* value = std::getenv(name);
    return value == nullptr ? std::filesystem::path() : std::filesystem::path(value);
}

} // namespace

UserPaths UserPaths::current() {
    UserPaths paths;
    paths.home = homeDirectory();
    // A relative data home is invalid by the base directory rules and counts as not set.
    const std::filesystem::path data = variable("XDG_DATA_HOME");
    if (data.is_absolute()) {
        paths.dataHome = data;
    } else if (!paths.home.empty()) {
        paths.dataHome = paths.home / ".local/share";
    }
    return paths;
}

std::optional<std::filesystem::path> UserPaths::database() const {
    if (!dataHome) return std::nullopt;
    return *dataHome / "Tokwatch/usage.sqlite";
}

std::optional<std::filesystem::path> UserPaths::snapshotDirectory() const {
    if (!dataHome) return std::nullopt;
    return *dataHome / SnapshotStore::appGroup;
}

} // namespace tokwatch

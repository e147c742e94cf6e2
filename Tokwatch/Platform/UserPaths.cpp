#include "UserPaths.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace tokwatch {
namespace {

std::filesystem::path variable(const char* name) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in this program changes its environment.
    const char* value = std::getenv(name);
    return value == nullptr ? std::filesystem::path() : std::filesystem::path(value);
}

std::filesystem::path homeOfAccount() {
    std::vector<char> buffer(16'384);
    struct passwd account {};
    struct passwd* found = nullptr;
    if (getpwuid_r(getuid(), &account, buffer.data(), buffer.size(), &found) != 0 ||
        found == nullptr)
        return {};
    return found->pw_dir;
}

} // namespace

UserPaths UserPaths::current() {
    UserPaths paths;
    paths.home = variable("HOME");
    if (paths.home.empty()) paths.home = homeOfAccount();
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
    return *dataHome / "Q7K2M9X4PL.app.tokwatch";
}

} // namespace tokwatch

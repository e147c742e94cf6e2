#include "Tokwatch/CommandLine/Doctor/Examinations.h"

#include "Platform/System/FileDescriptor.h"

#include <sys/inotify.h>

#include <cerrno>
#include <fstream>
#include <optional>
#include <system_error>

namespace tokwatch {
namespace {

std::int64_t directoriesIn(const std::filesystem::path& root) {
    std::error_code ignored;
    if (!std::filesystem::is_directory(root, ignored)) return 0;
    std::int64_t count = 1;
    using Walk = std::filesystem::recursive_directory_iterator;
    Walk walk(root, std::filesystem::directory_options::skip_permission_denied, ignored);
    for (; walk != Walk(); walk.increment(ignored)) {
        if (walk->is_directory(ignored) && !walk->is_symlink(ignored)) ++count;
    }
    return count;
}

/// How many directories the user may watch, all programs together.
std::optional<std::int64_t> allowedWatches() {
    std::ifstream file("/proc/sys/fs/inotify/max_user_watches");
    std::int64_t number = 0;
    if (file >> number) return number;
    return std::nullopt;
}

} // namespace

Finding examineWatches(const std::vector<std::filesystem::path>& roots) {
    const FileDescriptor instance(::inotify_init1(IN_CLOEXEC));
    if (instance.get() < 0)
        return {"Watches", Health::bad,
                "directories cannot be watched: " + std::generic_category().message(errno) +
                    "; changes are found every five minutes"};
    std::int64_t needed = 0;
    for (const std::filesystem::path& root : roots)
        needed += directoriesIn(root);
    std::string text =
        std::to_string(needed) + (needed == 1 ? " directory to watch" : " directories to watch");
    const std::optional<std::int64_t> allowed = allowedWatches();
    if (!allowed) return {"Watches", Health::good, text};
    text += ", the system allows " + std::to_string(*allowed);
    // The system does not tell how many are left; one that is refused does.
    if (::inotify_add_watch(instance.get(), "/", IN_DELETE_SELF) < 0 && errno == ENOSPC)
        return {"Watches", Health::bad,
                text + " (fs.inotify.max_user_watches), and all of these are used up; changes are "
                       "found every five minutes"};
    if (needed <= *allowed) return {"Watches", Health::good, text};
    return {"Watches", Health::bad,
            text + " (fs.inotify.max_user_watches); changes are found every five minutes"};
}

} // namespace tokwatch

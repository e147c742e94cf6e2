#include "Platform/Linux/InotifyWatches.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace tokwatch {
namespace {

constexpr unsigned contentEvents = IN_CREATE | IN_MODIFY | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE |
                                   IN_EXCL_UNLINK | IN_ONLYDIR | IN_DONT_FOLLOW;
constexpr unsigned rootEvents = contentEvents | IN_MOVE_SELF;
constexpr unsigned guardEvents =
    IN_CREATE | IN_MOVED_TO | IN_MOVE_SELF | IN_ONLYDIR | IN_DONT_FOLLOW;
constexpr int mostLinks = 40; ///< on a path's way, as the kernel has it

using OpenDirectory = std::unique_ptr<DIR, decltype([](DIR* directory) { closedir(directory); })>;

bool isDirectory(int directory, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
    struct stat status {};
    return fstatat(directory, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(status.st_mode);
}

std::string joined(const std::string& directory, std::string_view name) {
    std::string path = directory;
    if (!path.ends_with('/')) path += '/';
    return path.append(name);
}

} // namespace

InotifyWatches::InotifyWatches(std::size_t mostWatches)
    : limit(mostWatches), inotify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (!inotify.isOpen()) throw std::system_error(errno, std::generic_category(), "inotify");
}

std::optional<int> InotifyWatches::addRoot(const std::string& full, const OnFile& onFile) {
    const auto added = watch(full, rootEvents, {none, full});
    if (added) addBelow(*added, full, onFile);
    return added;
}

bool InotifyWatches::isInPlace(int root) const {
    const auto full = path(root);
    // A directory has one watch, however often it is asked for.
    return full &&
           inotify_add_watch(inotify.get(), full->c_str(), rootEvents | IN_MASK_ADD) == root;
}

void InotifyWatches::add(int parent, const std::string& name, const OnFile& onFile) {
    const auto above = path(parent);
    if (!above) return;
    const std::string full = joined(*above, name);
    const auto added = watch(full, contentEvents, {parent, name});
    if (added) addBelow(*added, full, onFile);
}

std::optional<int> InotifyWatches::watch(const std::string& full, unsigned flags,
                                         Directory directory) {
    if (directories.size() >= limit) {
        exhausted = true;
        return std::nullopt;
    }
    const int added = inotify_add_watch(inotify.get(), full.c_str(), flags);
    if (added < 0) {
        // Otherwise it has gone again, or is not ours to read.
        if (errno == ENOSPC) exhausted = true;
        return std::nullopt;
    }
    // A bind mount may show a directory above once more.
    if (directory.parent != none && isWithin(directory.parent, added)) return std::nullopt;
    directories.insert_or_assign(added, std::move(directory));
    return added;
}

/// A directory is watched before it is read, so that what appears in it meanwhile is either read
/// or reported.
void InotifyWatches::addBelow(int top, const std::string& topPath, const OnFile& onFile) {
    std::vector<std::pair<int, std::string>> unread{{top, topPath}};
    while (!unread.empty() && !exhausted) {
        const auto [current, currentPath] = std::move(unread.back());
        unread.pop_back();
        const OpenDirectory open(opendir(currentPath.c_str()));
        if (!open) continue; // gone again
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the stream belongs to this call alone.
        while (const dirent* entry = readdir(open.get())) {
            const std::string_view name = entry->d_name;
            if (name == "." || name == "..") continue;
            std::string full = joined(currentPath, name);
            if (!isDirectory(dirfd(open.get()), *entry)) {
                onFile(dirfd(open.get()), entry->d_name, full);
                continue;
            }
            const auto added = watch(full, contentEvents, {current, std::string(name)});
            if (added) unread.emplace_back(*added, std::move(full));
        }
    }
}

void InotifyWatches::remove(int parent, const std::string& name) {
    if (const auto found = find(parent, name)) remove(*found);
}

void InotifyWatches::remove(int top) {
    std::vector<int> ending;
    for (const auto& [candidate, directory] : directories)
        if (isWithin(candidate, top)) ending.push_back(candidate);
    for (const int each : ending) {
        directories.erase(each);
        inotify_rm_watch(inotify.get(), each);
    }
}

std::optional<std::string> InotifyWatches::path(int watch) const {
    const auto found = directories.find(watch);
    if (found == directories.end()) return std::nullopt;
    const auto& [parent, name] = found->second;
    if (parent == none) return name;
    const auto above = path(parent);
    return above ? std::optional(joined(*above, name)) : std::nullopt;
}

std::optional<int> InotifyWatches::find(int parent, const std::string& name) const {
    for (const auto& [candidate, directory] : directories)
        if (directory.parent == parent && directory.name == name) return candidate;
    return std::nullopt;
}

bool InotifyWatches::isWithin(int watch, int ancestor) const {
    while (watch != ancestor) {
        const auto found = directories.find(watch);
        if (found == directories.end() || found->second.parent == none) return false;
        watch = found->second.parent;
    }
    return true;
}

std::optional<std::string> InotifyWatches::guard(const std::string& given) {
    std::error_code error;
    std::filesystem::path place = "/";
    std::vector<std::filesystem::path> ahead; // the next name last
    const auto lead = [&ahead](const std::filesystem::path& way) {
        const std::vector<std::filesystem::path> names(way.begin(), way.end());
        ahead.insert(ahead.end(), names.rbegin(), names.rend());
    };
    lead(std::filesystem::absolute(given, error));
    for (int links = 0; !ahead.empty();) {
        const std::filesystem::path name = std::move(ahead.back());
        ahead.pop_back();
        if (name.empty() || name == ".") continue;
        if (name.is_absolute() || name == "..") {
            place = name.is_absolute() ? name : place.parent_path();
            continue;
        }
        // Guarded before it is looked at, so that nothing changes between the two. A directory may
        // be watched for its own sake, too; the guard adds to that.
        const int guarded =
            inotify_add_watch(inotify.get(), place.c_str(), guardEvents | IN_MASK_ADD);
        if (guarded >= 0) guards[guarded].insert(name.string());
        const std::filesystem::path next = place / name;
        const std::filesystem::file_status status = std::filesystem::symlink_status(next, error);
        if (std::filesystem::is_symlink(status)) {
            const std::filesystem::path target = std::filesystem::read_symlink(next, error);
            if (error || ++links > mostLinks) return std::nullopt;
            lead(target);
        } else if (std::filesystem::is_directory(status)) {
            place = next;
        } else {
            return std::nullopt;
        }
    }
    return place.string();
}

bool InotifyWatches::isOfGuards(const inotify_event& event) const {
    const auto found = guards.find(event.wd);
    if (found == guards.end()) return false;
    return (event.mask & (IN_MOVE_SELF | IN_IGNORED)) ||
           (event.len > 0 && found->second.contains(event.name));
}

void InotifyWatches::removeGuards() {
    for (const auto& [each, names] : std::exchange(guards, {}))
        if (!directories.contains(each)) inotify_rm_watch(inotify.get(), each);
}

} // namespace tokwatch

#pragma once

#include "Platform/System/FileDescriptor.h"

#include <cstddef>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

struct inotify_event;

namespace tokwatch {

/// The watches of one inotify instance over whole directory trees, which the kernel offers for
/// single directories only: about 150 bytes of ours and 1 KB of the kernel's for each. One thread.
class InotifyWatches {
  public:
    /// What adding a tree found in it: a file, in an open directory, and its path.
    using OnFile = std::function<void(int directory, const char* name, const std::string& path)>;

    /// `limit` stands beside the user's limit of the system. Throws std::system_error.
    explicit InotifyWatches(std::size_t limit = std::numeric_limits<std::size_t>::max());

    /// Readable when there are events.
    int descriptor() const { return inotify.get(); }

    /// Watches the directory, whose path has no symbolic links, with all directories below it. None
    /// when it cannot be watched.
    std::optional<int> addRoot(const std::string& path, const OnFile& onFile);
    /// Whether the directory that is watched as a root is the one at the root's path.
    bool isInPlace(int root) const;
    /// Watches a directory in a watched one, with all below it.
    void add(int parent, const std::string& name, const OnFile& onFile);
    /// Ends the watches of a directory that was moved away, and of all below it.
    void remove(int parent, const std::string& name);
    void remove(int watch);
    /// The kernel ended the watch.
    void forget(int watch) { directories.erase(watch); }
    /// The directory's path without symbolic links; none for watches that have ended.
    std::optional<std::string> path(int watch) const;

    /// Where the path leads by now, through symbolic links; none where that is no directory. What
    /// may change that is watched from then on: each directory on the way, for its own move and for
    /// what appears in it under the next name. The few that cannot be watched are passed over.
    std::optional<std::string> guard(const std::string& path);
    /// Whether a guarded path may lead elsewhere since the event.
    bool isOfGuards(const inotify_event& event) const;
    void removeGuards();

    /// Whether since the last call a directory could not be watched because there are too many.
    bool takeExhaustion() { return std::exchange(exhausted, false); }

  private:
    static constexpr int none = -1;
    struct Directory {
        int parent;       ///< its watch; none for a root
        std::string name; ///< a root's is its path
    };

    std::optional<int> watch(const std::string& path, unsigned flags, Directory directory);
    void addBelow(int watch, const std::string& path, const OnFile& onFile);
    std::optional<int> find(int parent, const std::string& name) const;
    bool isWithin(int watch, int ancestor) const;

    std::size_t limit;
    FileDescriptor inotify;
    std::unordered_map<int, Directory> directories; ///< by watch
    std::map<int, std::set<std::string>> guards;    ///< by watch, the names on the way
    bool exhausted = false;
};

} // namespace tokwatch

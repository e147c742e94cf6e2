#pragma once

#include "Platform/Linux/InotifyWatches.h"
#include "Platform/Seams/FileEventStream.h"
#include "Platform/System/FileDescriptor.h"

#include <atomic>
#include <chrono>
#include <ctime>
#include <limits>
#include <optional>
#include <thread>
#include <unordered_set>

struct inotify_event;

namespace tokwatch {

/// File events of directory trees from inotify, on a thread of its own that sleeps while nothing
/// happens.
///
/// Directories that appear are watched with all below them, and the files that were in them before
/// are reported. Directories may be missing, vanish and come back, also as others: when a directory
/// above is renamed, or a symbolic link on the way leads elsewhere. Mounting tells nothing. What
/// cannot be known for sure, because events were lost or there are too many directories to watch,
/// is reported as a rescan of all directories and logged, once for each reason.
class InotifyStream final : public FileEventStream {
  public:
    /// Null, with a line in the log, when the system has no inotify instance left.
    static std::unique_ptr<FileEventStream> open(const std::vector<std::string>& paths,
                                                 Seconds latency, OnEvents onEvents);

    /// As `open`, with a limit beside the system's. Throws std::system_error.
    InotifyStream(const std::vector<std::string>& paths, Seconds latency, OnEvents onEvents,
                  std::size_t watchLimit = std::numeric_limits<std::size_t>::max());
    ~InotifyStream() override;

    bool isRunning() const override { return !ended; }

  private:
    using Steady = std::chrono::steady_clock;
    struct Root {
        std::string given;
        std::string path;         ///< without symbolic links, as far as known
        std::optional<int> watch; ///< none while the directory is missing
    };

    // All of these on the stream's thread.
    void run(timespec start);
    /// Sleeps until there is something to do; false when the stream is to end.
    bool wait();
    /// Sleeps until the moment, or for ever, or an event comes; false when the stream is to end.
    bool sleep(std::optional<Steady::time_point> until, bool forEvents);
    void readEvents();
    void handle(const inotify_event& event);
    void handleDirectory(int parent, unsigned mask, const std::string& name);
    void startOver();
    /// Opens the directories that the roots' paths lead to by now, instead of those that they led
    /// to, and guards the ways there. Reports files that were written at `since` or later, or
    /// without it the roots as a whole.
    void followRoots(std::optional<timespec> since = {});
    void openRoot(Root& root, const std::string& path, std::optional<timespec> since);
    void closeRoot(Root& root);
    bool isRoot(int watch) const;
    void checkExhaustion();
    void add(std::string path, bool isRescan = false);
    void rescanEverything();
    void deliver();

    const Seconds latency;
    const OnEvents onEvents;
    const std::size_t watchLimit;
    FileDescriptor ending; ///< becomes readable
    std::optional<InotifyWatches> watches;
    std::vector<Root> roots;
    std::vector<FileEvent> batch;
    std::unordered_set<std::string> inBatch; ///< paths of its events that are no rescan
    Steady::time_point due;                  ///< of the batch, when there is one
    bool overflowLogged = false;
    bool exhaustionLogged = false;
    std::atomic<bool> ended = false;
    std::thread thread; ///< last, as it uses the others
};

} // namespace tokwatch

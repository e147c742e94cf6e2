#include "Platform/Linux/InotifyStream.h"

#include "TokwatchCore/Support/SystemLog.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <ctime>
#include <exception>
#include <system_error>
#include <utility>

namespace tokwatch {
namespace {

/// After events, others are let gather for so long before they are read: a log that is written
/// steadily wakes the thread 20 times a second and not at each write.
constexpr std::chrono::milliseconds gathering{50};

bool isAtOrAfter(const timespec& moment, const timespec& other) {
    return std::pair(moment.tv_sec, moment.tv_nsec) >= std::pair(other.tv_sec, other.tv_nsec);
}

/// The clock that the kernel stamps files with.
timespec fileClock() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return now;
}

std::string threadName() {
    constexpr std::size_t longestName = 15; // the kernel's limit
    const std::size_t lastWord = directoryWatcherLabel.rfind('.') + 1;
    return std::string(directoryWatcherLabel.substr(lastWord, longestName));
}

} // namespace

std::unique_ptr<FileEventStream> InotifyStream::open(const std::vector<std::string>& paths,
                                                     Seconds latency, OnEvents onEvents) {
    try {
        return std::make_unique<InotifyStream>(paths, latency, std::move(onEvents));
    } catch (const std::system_error& error) {
        systemLog("watching the logs failed: " + std::string(error.what()));
        return nullptr;
    }
}

InotifyStream::InotifyStream(const std::vector<std::string>& paths, Seconds coalescingLatency,
                             OnEvents receiver, std::size_t mostWatches)
    : latency(coalescingLatency), onEvents(std::move(receiver)), watchLimit(mostWatches),
      ending(eventfd(0, EFD_CLOEXEC)) {
    if (!ending.isOpen()) throw std::system_error(errno, std::generic_category(), "eventfd");
    watches.emplace(watchLimit);
    for (const std::string& path : paths)
        roots.push_back({path, path, std::nullopt});
    // Setting thousands of watches takes a while and happens on the thread. What is written until
    // then is known by its time.
    thread = std::thread([this, start = fileClock()] { run(start); });
}

InotifyStream::~InotifyStream() {
    eventfd_write(ending.get(), 1);
    thread.join();
}

void InotifyStream::run(timespec start) {
    pthread_setname_np(pthread_self(), threadName().c_str());
    try {
        followRoots(start);
        while (wait()) {
            readEvents();
            if (!batch.empty() && Steady::now() >= due) deliver();
        }
    } catch (const std::exception& error) {
        systemLog("watching the logs failed: " + std::string(error.what()));
    }
    ended = true;
}

// Time

bool InotifyStream::wait() {
    if (batch.empty()) return sleep(std::nullopt, true);
    return sleep(std::min(due, Steady::now() + gathering), false) && sleep(due, true);
}

bool InotifyStream::sleep(std::optional<Steady::time_point> until, bool forEvents) {
    std::array<pollfd, 2> descriptors{pollfd{ending.get(), POLLIN, 0},
                                      pollfd{watches->descriptor(), POLLIN, 0}};
    const nfds_t count = forEvents ? 2 : 1;
    for (;;) {
        int timeout = -1;
        if (until) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(*until - Steady::now());
            timeout = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
        }
        if (poll(descriptors.data(), count, timeout) >= 0) return descriptors[0].revents == 0;
        if (errno != EINTR) throw std::system_error(errno, std::generic_category(), "poll");
    }
}

void InotifyStream::add(std::string path, bool isRescan) {
    if (!isRescan && !inBatch.insert(path).second) return;
    if (isRescan && std::ranges::count(batch, FileEvent{path, true}) > 0) return;
    if (batch.empty()) due = Steady::now() + std::chrono::duration_cast<Steady::duration>(latency);
    batch.push_back({std::move(path), isRescan});
}

void InotifyStream::deliver() {
    inBatch.clear();
    onEvents(std::exchange(batch, {}));
}

// Events

void InotifyStream::readEvents() {
    alignas(inotify_event) std::array<char, std::size_t{16} * 1024> buffer;
    // However fast events come, the batch is delivered when it is due.
    while (batch.empty() || Steady::now() < due) {
        const ssize_t length = read(watches->descriptor(), buffer.data(), buffer.size());
        if (length < 0 && errno == EINTR) continue;
        if (length < 0 && errno == EAGAIN) return;
        if (length < 0) throw std::system_error(errno, std::generic_category(), "inotify");
        for (ssize_t offset = 0; offset < length;) {
            const auto& event = *reinterpret_cast<const inotify_event*>(buffer.data() + offset);
            if (event.mask & IN_Q_OVERFLOW) {
                startOver();
                return;
            }
            handle(event);
            offset += static_cast<ssize_t>(sizeof(inotify_event) + event.len);
        }
    }
}

void InotifyStream::handle(const inotify_event& event) {
    if (event.mask & IN_IGNORED) watches->forget(event.wd);
    const bool isGone = event.mask & (IN_MOVE_SELF | IN_IGNORED);
    if ((isGone && isRoot(event.wd)) || watches->isOfGuards(event)) followRoots();
    const auto directory = watches->path(event.wd);
    if (!directory || event.len == 0) return;
    const std::string name = event.name; // padded with zeros
    if (event.mask & IN_ISDIR) handleDirectory(event.wd, event.mask, name);
    // A new directory is nothing yet; what is in it, is.
    const bool isNewDirectory = (event.mask & IN_ISDIR) && (event.mask & (IN_CREATE | IN_MOVED_TO));
    if (!isNewDirectory) add(*directory + '/' + name);
}

void InotifyStream::handleDirectory(int parent, unsigned mask, const std::string& name) {
    if (mask & IN_MOVED_FROM) watches->remove(parent, name);
    if (!(mask & (IN_CREATE | IN_MOVED_TO))) return;
    watches->add(parent, name, [this](int, const char*, const std::string& path) { add(path); });
    checkExhaustion();
}

// What cannot be known

/// Directories may have come and gone unseen: all watches are set anew.
void InotifyStream::startOver() {
    if (!std::exchange(overflowLogged, true))
        systemLog("file events came too fast and were lost; reading all logs again");
    watches.reset();
    watches.emplace(watchLimit);
    for (Root& root : roots)
        root.watch.reset();
    followRoots();
    rescanEverything();
}

void InotifyStream::checkExhaustion() {
    if (!watches->takeExhaustion()) return;
    if (!std::exchange(exhaustionLogged, true))
        systemLog("there are more log folders than can be watched (fs.inotify.max_user_watches); "
                  "changes in the others are found by the regular passes");
    rescanEverything();
}

void InotifyStream::rescanEverything() {
    for (const Root& root : roots)
        add(root.path, true);
}

// Roots

void InotifyStream::followRoots(std::optional<timespec> since) {
    watches->removeGuards();
    for (Root& root : roots) {
        const std::optional<std::string> path = watches->guard(root.given);
        if (root.watch && (path != root.path || !watches->isInPlace(*root.watch))) closeRoot(root);
        if (!root.watch && path) openRoot(root, *path, since);
    }
    checkExhaustion();
}

void InotifyStream::openRoot(Root& root, const std::string& path, std::optional<timespec> since) {
    const auto report = [this, since](int directory, const char* name, const std::string& file) {
        struct stat status {};
        if (since && fstatat(directory, name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            isAtOrAfter(status.st_ctim, *since)) // a moved file keeps when it was written
            add(file);
    };
    root.watch = watches->addRoot(path, report);
    if (!root.watch) return;
    root.path = path;
    if (!since) add(path, true);
}

void InotifyStream::closeRoot(Root& root) {
    watches->remove(*root.watch);
    root.watch.reset();
    add(root.path, true);
}

bool InotifyStream::isRoot(int watch) const {
    return std::ranges::find(roots, std::optional(watch), &Root::watch) != roots.end();
}

} // namespace tokwatch

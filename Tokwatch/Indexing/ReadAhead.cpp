#include "Tokwatch/Indexing/ReadAhead.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace tokwatch {
namespace {

/// How far readers may be ahead, in events and slices.
constexpr std::size_t mostWaiting = 16'384;
/// What is read at once, in bytes of windows: three large files, or as many small ones as there are
/// readers. Three of them parse as much as one thread can write.
constexpr std::int64_t mostWindowBytes = 3 * JSONLTail::sliceBytes;

std::size_t weightOf(const Slice& slice) {
    return slice.events.size() + 1;
}

std::int64_t windowOf(const PendingFile& pending) {
    return std::min(pending.file.attributes.size, JSONLTail::sliceBytes);
}

} // namespace

ReadAhead::ReadAhead(const std::vector<PendingFile>& pendingFiles, Clock clock, std::size_t readers)
    : files(pendingFiles), now(std::move(clock)) {
    threads.reserve(readers);
    try {
        while (threads.size() < readers)
            threads.emplace_back([this] { read(); });
    } catch (const std::system_error&) {
        if (threads.empty()) throw;
    }
}

ReadAhead::~ReadAhead() {
    stop();
    for (std::thread& thread : threads)
        thread.join();
}

void ReadAhead::stop() {
    const std::lock_guard lock(mutex);
    stopped = true;
    roomCame.notify_all();
    windowCame.notify_all();
}

std::optional<Slice> ReadAhead::next() {
    std::unique_lock lock(mutex);
    while (first < files.size()) {
        sliceCame.wait(lock, [this] { return !lanes.empty() && !isAwaited(first); });
        std::deque<Slice>& slices = lanes.front().slices;
        if (slices.empty()) {
            lanes.pop_front();
            ++first;
            wakeReaders();
            continue;
        }
        Slice slice = std::move(slices.front());
        slices.pop_front();
        waiting -= weightOf(slice);
        wakeReaders();
        return slice;
    }
    return std::nullopt;
}

/// Whether nothing can be given before this file's reader puts a slice.
bool ReadAhead::isAwaited(std::size_t file) const {
    return file == first && lanes.front().slices.empty() && !lanes.front().isRead;
}

/// Not for each slice that is taken: a reader that is woken should find room for many.
void ReadAhead::wakeReaders() {
    if (waiting < mostWaiting / 2 || (!lanes.empty() && isAwaited(first))) roomCame.notify_all();
}

void ReadAhead::read() {
    SliceReader reader(files, now);
    while (const std::optional<std::size_t> file = begin()) {
        reader.begin(*file);
        while (std::optional<Slice> slice = reader.next()) {
            if (!put(std::move(*slice))) return;
        }
        end(*file);
    }
}

std::optional<std::size_t> ReadAhead::begin() {
    std::unique_lock lock(mutex);
    windowCame.wait(lock, [this] {
        return stopped || begun == files.size() || windowBytes == 0 ||
               windowBytes + windowOf(files[begun]) <= mostWindowBytes;
    });
    if (stopped || begun == files.size()) return std::nullopt;
    windowBytes += windowOf(files[begun]);
    lanes.emplace_back();
    return begun++;
}

bool ReadAhead::put(Slice slice) {
    std::unique_lock lock(mutex);
    roomCame.wait(lock, [&] { return stopped || waiting < mostWaiting || isAwaited(slice.file); });
    if (stopped) return false;
    if (isAwaited(slice.file)) sliceCame.notify_one();
    waiting += weightOf(slice);
    std::deque<Slice>& slices = lanes[slice.file - first].slices;
    slices.push_back(std::move(slice));
    return true;
}

void ReadAhead::end(std::size_t file) {
    const std::lock_guard lock(mutex);
    if (isAwaited(file)) sliceCame.notify_one();
    lanes[file - first].isRead = true;
    windowBytes -= windowOf(files[file]);
    windowCame.notify_all();
}

} // namespace tokwatch

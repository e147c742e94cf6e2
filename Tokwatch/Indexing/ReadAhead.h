#pragma once

#include "Tokwatch/Indexing/SliceReader.h"
#include "TokwatchCore/Support/Date.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace tokwatch {

/// Reads pending files on threads of its own and gives their slices in the order of the files,
/// whichever was read sooner, so that nothing depends on how many threads there are. A file is read
/// by one thread, however large: the parser of its next line needs what the last one left.
///
/// Memory is bounded twice. A reader waits while others' slices wait to be taken, unless everybody
/// waits for its own; and a file is begun only where the windows of all that are being read stay
/// small together.
class ReadAhead {
  public:
    /// Throws std::system_error where the system allows not a single thread; makes do with fewer
    /// than it was asked for. The clock is read on all of them.
    ReadAhead(const std::vector<PendingFile>& pendingFiles, Clock clock, std::size_t readers);
    /// Readers end after their present slices.
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// The next slice; none when all files have been given to their last complete line.
    std::optional<Slice> next();

  private:
    /// Of one file that was begun: what nobody has taken yet.
    struct Lane {
        std::deque<Slice> slices;
        bool isRead = false; ///< no more will come
    };

    void read();
    std::optional<std::size_t> begin();
    bool put(Slice slice);
    void end(std::size_t file);
    bool isAwaited(std::size_t file) const;
    void wakeReaders();
    void stop();

    const std::vector<PendingFile>& files;
    Clock now;
    std::mutex mutex; ///< over all that follows, but for the threads
    std::condition_variable sliceCame;
    std::condition_variable roomCame;   ///< for a slice
    std::condition_variable windowCame; ///< for another file
    std::deque<Lane> lanes;             ///< of the files `first` to `begun`
    std::size_t first = 0;              ///< the file that is being given
    std::size_t begun = 0;
    std::size_t waiting = 0;      ///< weight of the slices in all lanes
    std::int64_t windowBytes = 0; ///< of the files that are being read
    bool stopped = false;
    std::vector<std::thread> threads;
};

} // namespace tokwatch

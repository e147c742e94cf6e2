#pragma once

#include "TokwatchCore/Support/Date.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tokwatch {

struct FileEvent {
    std::string path; ///< without symbolic links
    /// Anything below the path may have changed: events were lost or could not be obtained.
    bool isRescan = false;

    friend bool operator==(const FileEvent&, const FileEvent&) = default;
};

/// A running stream of what changes in directory trees. Its end stops it, and waits for a batch
/// that is being delivered; no batch comes afterwards.
class FileEventStream {
  public:
    virtual ~FileEventStream() = default;

    /// False once the stream has ended by itself. Callable from any thread.
    virtual bool isRunning() const = 0;

    /// Takes the events of about one latency, each once, in the order of their first occurrence.
    /// Runs on the stream's own thread, one batch at a time.
    using OnEvents = std::function<void(std::vector<FileEvent> batch)>;
};

/// What the watching thread is called; the system shows the last word as far as it fits.
constexpr std::string_view directoryWatcherLabel = "app.tokwatch.directory-watcher";

/// Starts a stream over directories, of what happens from now on. A batch is delivered `latency`
/// after its first event, however long events keep coming. Null when there can be none.
using OpenFileEventStream = std::function<std::unique_ptr<FileEventStream>(
    const std::vector<std::string>& paths, Seconds latency, FileEventStream::OnEvents onEvents)>;

} // namespace tokwatch

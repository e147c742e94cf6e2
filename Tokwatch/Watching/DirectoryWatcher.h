#pragma once

#include "Platform/Seams/FileEventStream.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tokwatch {

/// Tells which files below some directories change.
///
/// `start` and `stop` belong to one thread and are not called from `onChange`, which runs on the
/// stream's thread and gets paths without symbolic links, each once. A path that is one of the
/// directories or a directory below stands for all that is in it.
class DirectoryWatcher {
  public:
    using OnChange = std::function<void(std::vector<std::string> paths)>;

    /// Starts nothing yet.
    DirectoryWatcher(std::vector<std::filesystem::path> paths, Seconds latency, OnChange onChange,
                     OpenFileEventStream open);
    ~DirectoryWatcher();
    DirectoryWatcher(const DirectoryWatcher&) = delete;
    DirectoryWatcher& operator=(const DirectoryWatcher&) = delete;

    /// Does nothing when it runs already or has no paths. Where the stream could not be opened, or
    /// has ended by itself, a further call tries again.
    void start();
    void stop();
    bool isRunning() const { return stream && stream->isRunning(); }

  private:
    void handle(const std::vector<FileEvent>& batch) const;

    const std::vector<std::filesystem::path> paths;
    const Seconds latency;
    const OnChange onChange;
    const OpenFileEventStream open;
    std::unique_ptr<FileEventStream> stream;
};

} // namespace tokwatch

#pragma once

#include "Tokwatch/Indexing/IndexerService.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace tokwatch {

/// Brings the indexer's progress to the main thread: the latest value at a time, however fast they
/// come, and none after the end of its pass.
class ProgressRelay : public std::enable_shared_from_this<ProgressRelay> {
  public:
    /// `receiver` is called on the main thread.
    explicit ProgressRelay(std::function<void(const IndexingProgress&)> receiver);

    /// Callable from any thread.
    void post(const IndexingProgress& progress);
    /// Main thread.
    void end() { ended = true; }

  private:
    void deliver();

    const std::function<void(const IndexingProgress&)> receiver;
    bool ended = false; ///< looked at on the main thread only
    std::mutex mutex;
    std::optional<IndexingProgress> latest; ///< on its way to the main thread
};

} // namespace tokwatch

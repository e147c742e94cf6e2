#pragma once

#include "Tokwatch/CommandLine/Terminal.h"
#include "Tokwatch/Indexing/IndexerService.h"

#include <chrono>

namespace tokwatch {

/// Shows how far a pass has come, as one line that is drawn over; nothing where there is no
/// terminal.
class ProgressBar {
  public:
    explicit ProgressBar(Terminal& terminal);
    /// Draws at most ten times a second.
    void show(const IndexingProgress& progress);

  private:
    Terminal& terminal;
    std::chrono::steady_clock::time_point lastDrawn;
};

} // namespace tokwatch

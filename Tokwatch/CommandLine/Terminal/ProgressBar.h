#pragma once

#include "Tokwatch/CommandLine/Terminal/Terminal.h"

#include <chrono>
#include <cstdint>
#include <string_view>

namespace tokwatch {

/// Shows how far reading has come, as one line that is drawn over; nothing where there is no
/// terminal. Whoever began it clears the line.
class ProgressBar {
  public:
    explicit ProgressBar(Terminal& t) : terminal(t) {}

    /// "Reading Claude ▕██▏ 1.2 MB of 3.4 MB"
    void show(std::string_view what, std::int64_t bytesRead, std::int64_t bytesTotal);

  private:
    Terminal& terminal;
    std::chrono::steady_clock::time_point lastDrawn = std::chrono::steady_clock::now();
};

} // namespace tokwatch

#pragma once

#include "TokwatchCore/Support/SystemLog.h"

#include <mutex>
#include <string>
#include <vector>

namespace tokwatch::testing {

/// Collects the system log's lines ("Tokwatch: …") while it lives.
class CapturedLog {
  public:
    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex);
        return collected;
    }

  private:
    mutable std::mutex mutex;
    std::vector<std::string> collected;
    SystemLogCapture capture{[this](const std::string& line) {
        const std::lock_guard lock(mutex);
        collected.push_back(line);
    }};
};

} // namespace tokwatch::testing

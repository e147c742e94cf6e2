#pragma once

#include "TokwatchCore/Support/SystemLog.h"

#include <mutex>
#include <string>
#include <vector>

namespace tokwatch::testing {

/// Collects the system log's lines ("Tokwatch: …") while it lives.
class CapturedLog {
  public:
    CapturedLog();
    std::vector<std::string> lines() const;

  private:
    mutable std::mutex mutex;
    std::vector<std::string> collected;
    SystemLogCapture capture;
};

} // namespace tokwatch::testing

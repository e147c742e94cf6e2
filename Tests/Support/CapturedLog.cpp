#include "Tests/Support/CapturedLog.h"

namespace tokwatch::testing {

CapturedLog::CapturedLog()
    : capture([this](const std::string& line) {
          const std::lock_guard lock(mutex);
          collected.push_back(line);
      }) {}

std::vector<std::string> CapturedLog::lines() const {
    const std::lock_guard lock(mutex);
    return collected;
}

} // namespace tokwatch::testing

#pragma once

#include "TokwatchCore/Support/Calendar.h"

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

namespace tokwatch {

/// The time zone of this process as it is at each call: what the TZ variable names, else what the
/// system's zone file says, which is replaced while programs run. Asking costs two system calls;
/// the zone is read again only where the file is another. Callable from any thread.
///
/// Abseil's own local zone is read once a process, and it keeps every zone by its name for ever.
class LocalZone {
  public:
    /// `variable`: the value of TZ, if set.
    LocalZone(std::optional<std::string> variable, std::filesystem::path systemFile);

    /// UTC, with a line in the log, where the zone is unknown.
    Calendar calendar();

  private:
    Calendar systemCalendar();

    const std::optional<Calendar> fixed; ///< by the variable
    const std::filesystem::path file;
    std::mutex mutex;
    std::string seen; ///< what identified the file when `last` was read; guarded like the rest
    std::size_t readings = 0;
    Calendar last = Calendar::utc();
};

} // namespace tokwatch

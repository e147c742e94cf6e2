#pragma once

#include "FileDescriptor.h"

#include <filesystem>
#include <optional>

namespace tokwatch {

/// Of several followers over one data directory, one does the work: a bar on each of three monitors
/// must not ask the services three times as often. The lease ends with its process, however that
/// ends.
class WorkLease {
  public:
    /// Without a directory everybody holds a lease.
    explicit WorkLease(const std::optional<std::filesystem::path>& directory);

    /// True from when nobody else holds it. Where leases cannot be had, for want of a place or of
    /// the system's support, everybody gets one: work done twice is better than none.
    bool take();

  private:
    std::filesystem::path path;
    FileDescriptor file;
    bool isHeld;
};

} // namespace tokwatch

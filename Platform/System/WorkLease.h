#pragma once

#include "Platform/System/FileDescriptor.h"

#include <cstdint>
#include <filesystem>
#include <optional>

namespace tokwatch {

/// Of the processes over one data directory, one does the work: a bar on each of three monitors
/// must not ask the services three times as often. The desktop application comes before followers,
/// which make room for it. A lock on a file, so that the lease ends with its process, however that
/// ends; open file description locks, since the process's own ones go with any descriptor that is
/// closed.
class WorkLease {
  public:
    /// A guest, which may do a part of the work only, works where nobody else would.
    enum class Rank { guest, follower, desktop };

    /// Without a directory everybody works.
    WorkLease(std::optional<std::filesystem::path> directory, Rank rank);

    /// Whether this process is to work from now on. To be asked time and again: the lease is taken
    /// once it is free, and a follower gives it up when a desktop application wants it. Where
    /// leases cannot be taken, for want of a place or of the system's support, everybody works:
    /// work done twice is better than none.
    bool renew();
    /// Whether this process works in the place of one that holds the lease and gives no sign of
    /// life: it was stopped, and may be continued.
    bool isStandIn() const { return standsIn; }
    void setRank(Rank newRank) { rank = newRank; }

  private:
    bool openFile();
    bool mustMakeRoom() const;
    bool isFileReplaced() const;
    void beat();
    bool standIn();
    void leaveStandIn();

    std::filesystem::path path;
    Rank rank;
    FileDescriptor file;
    bool isAnnounced = false; ///< that a desktop application is here
    bool isHeld = false;
    bool standsIn = false;
    std::int64_t beats = 0;
    std::int64_t seenBeat = 0; ///< of who holds the lease
    int silentLooks = 0;       ///< since it moved
};

} // namespace tokwatch

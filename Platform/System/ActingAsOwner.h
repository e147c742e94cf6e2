#pragma once

#include <filesystem>

#include <sys/types.h>

namespace tokwatch {

/// While it lives, its thread makes, replaces and removes files as the owner of the directory
/// would, where the process is the administrator and the directory another user's: with `sudo -E`,
/// say, files of root's own would lock that user out. It may do no more than that user meanwhile,
/// so that no link which is planted at the wrong moment leads it elsewhere; giving files away once
/// they are made could not promise that. Does nothing for anybody else, and where the system does
/// not let it. One may live within another.
class ActingAsOwner {
  public:
    explicit ActingAsOwner(const std::filesystem::path& directory);
    ~ActingAsOwner();
    ActingAsOwner(const ActingAsOwner&) = delete;
    ActingAsOwner& operator=(const ActingAsOwner&) = delete;

  private:
    const uid_t userBefore;
    const gid_t groupBefore;
};

} // namespace tokwatch

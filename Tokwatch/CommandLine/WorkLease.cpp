#include "WorkLease.h"

#include "PrivateFiles.h"

#include <sys/file.h>

#include <cerrno>
#include <system_error>

namespace tokwatch {

WorkLease::WorkLease(const std::optional<std::filesystem::path>& directory)
    : path(directory.value_or("") / "follower.lock"), isHeld(!directory) {}

bool WorkLease::take() {
    if (isHeld) return true;
    try {
        if (!file.isOpen()) file = openPrivately(path);
    } catch (const std::system_error&) {
        return isHeld = true;
    }
    isHeld = ::flock(file.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
    return isHeld;
}

} // namespace tokwatch

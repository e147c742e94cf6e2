#include "WorkLease.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

namespace tokwatch {

WorkLease::WorkLease(const std::optional<std::filesystem::path>& directory)
    : path(directory.value_or("") / "follower.lock"), isHeld(!directory) {}

bool WorkLease::take() {
    if (isHeld) return true;
    constexpr mode_t privateFile = 0600;
    if (!file.isOpen())
        file = FileDescriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, privateFile));
    isHeld = ::flock(file.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
    return isHeld;
}

} // namespace tokwatch

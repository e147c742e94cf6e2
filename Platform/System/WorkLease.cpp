#include "Platform/System/WorkLease.h"

#include "Platform/System/PrivateFiles.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace tokwatch {
namespace {

/// Which of the file's bytes stand for what.
constexpr off_t workByte = 0;
constexpr off_t desktopByte = 1;
constexpr off_t waitingByte = 2; ///< others than guests want to work
constexpr off_t standInByte = 3;
/// Who works moves a lock through these, at each look by one: signs of life that cost no disk.
constexpr off_t firstBeat = 1'000;
constexpr off_t mostBeats = 1'000'000;
/// So many looks without one, half a minute, and another process stands in.
constexpr int mostSilentLooks = 15;

struct flock lockOf(off_t byte, short kind) {
    struct flock lock {};
    lock.l_type = kind;
    lock.l_whence = SEEK_SET;
    lock.l_start = byte;
    lock.l_len = 1;
    return lock;
}

enum class Outcome { done, heldByAnother, unsupported };

Outcome setLock(int file, off_t byte, short kind) {
    struct flock lock = lockOf(byte, kind);
    if (::fcntl(file, F_OFD_SETLK, &lock) == 0) return Outcome::done;
    return errno == EAGAIN || errno == EACCES ? Outcome::heldByAnother : Outcome::unsupported;
}

bool isLockedByAnother(int file, off_t byte) {
    struct flock lock = lockOf(byte, F_WRLCK);
    return ::fcntl(file, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

/// Where the lock is that another moves; 0 where there is none.
off_t beatOfAnother(int file) {
    struct flock lock = lockOf(firstBeat, F_WRLCK);
    lock.l_len = mostBeats;
    if (::fcntl(file, F_OFD_GETLK, &lock) != 0 || lock.l_type == F_UNLCK) return 0;
    return lock.l_start;
}

} // namespace

WorkLease::WorkLease(std::optional<std::filesystem::path> directory, Rank ownRank)
    : path(directory ? *directory / "work.lock" : std::filesystem::path()), rank(ownRank) {}

bool WorkLease::renew() {
    if (path.empty() || !openFile()) return true;
    if (rank == Rank::desktop && !isAnnounced)
        isAnnounced = setLock(file.get(), desktopByte, F_RDLCK) == Outcome::done;
    if (mustMakeRoom()) {
        if (isHeld) {
            setLock(file.get(), workByte, F_UNLCK);
            setLock(file.get(), firstBeat + beats % mostBeats, F_UNLCK);
        }
        isHeld = false;
        return standIn();
    }
    Outcome outcome = Outcome::done;
    if (!isHeld) {
        outcome = setLock(file.get(), workByte, F_WRLCK);
        isHeld = outcome == Outcome::done;
        if (rank != Rank::guest) setLock(file.get(), waitingByte, isHeld ? F_UNLCK : F_RDLCK);
    }
    if (outcome == Outcome::heldByAnother) return standIn();
    if (isHeld) beat();
    leaveStandIn();
    return true;
}

void WorkLease::beat() {
    const off_t before = firstBeat + beats % mostBeats;
    ++beats;
    setLock(file.get(), firstBeat + beats % mostBeats, F_WRLCK);
    setLock(file.get(), before, F_UNLCK);
}

/// Whether to work although another is to: it gives no sign of life, and nobody else stands in.
bool WorkLease::standIn() {
    const off_t beat = beatOfAnother(file.get());
    silentLooks = beat == std::exchange(seenBeat, beat) ? silentLooks + 1 : 0;
    if (silentLooks < mostSilentLooks) {
        leaveStandIn();
        return false;
    }
    if (!standsIn) standsIn = setLock(file.get(), standInByte, F_WRLCK) == Outcome::done;
    return standsIn;
}

void WorkLease::leaveStandIn() {
    if (standsIn) setLock(file.get(), standInByte, F_UNLCK);
    standsIn = false;
}

bool WorkLease::mustMakeRoom() const {
    switch (rank) {
    case Rank::guest:
        return isLockedByAnother(file.get(), waitingByte);
    case Rank::follower:
        return isLockedByAnother(file.get(), desktopByte);
    case Rank::desktop:
        break;
    }
    return false;
}

bool WorkLease::openFile() {
    if (file.isOpen() && !isFileReplaced()) return true;
    isAnnounced = isHeld = standsIn = false;
    try {
        file = openPrivately(path);
    } catch (const std::system_error&) {
        file = FileDescriptor();
    }
    return file.isOpen();
}

/// Somebody cleared the data directory; those who come later lock the file that is there now.
bool WorkLease::isFileReplaced() const {
    struct stat own {
    }, there{};
    return ::fstat(file.get(), &own) == 0 && ::stat(path.c_str(), &there) == 0 &&
           (own.st_dev != there.st_dev || own.st_ino != there.st_ino);
}

} // namespace tokwatch

#include "Platform/System/ActingAsOwner.h"

#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tokwatch {

ActingAsOwner::ActingAsOwner(const std::filesystem::path& directory) {
    struct stat status = {};
    const char* place = directory.empty() ? "." : directory.c_str();
    if (::geteuid() != 0 || ::stat(place, &status) != 0 || status.st_uid == 0) return;
    ::setfsgid(status.st_gid);
    ::setfsuid(status.st_uid);
}

ActingAsOwner::~ActingAsOwner() {
    ::setfsuid(::geteuid());
    ::setfsgid(::getegid());
}

} // namespace tokwatch

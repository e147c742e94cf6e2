#include "Platform/Linux/ProcessHardening.h"

#include <sys/resource.h>

namespace tokwatch {

void preventCoreDumps() {
    // A limit of one byte, not of none: dumps into files do not fit, and dumps through a pipe to a
    // collecting program, which zero does not concern, are refused by the kernel for exactly this
    // value. PR_SET_DUMPABLE would do too, but hides /proc/self from desktop portals.
    const rlimit limit{1, 1};
    ::setrlimit(RLIMIT_CORE, &limit);
}

} // namespace tokwatch

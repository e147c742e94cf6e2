#include "Platform/Linux/ProcessHardening.h"

#include <sys/resource.h>

#include <latch>
#include <system_error>
#include <thread>
#include <vector>

namespace tokwatch {

void preventCoreDumps() {
    // A limit of one byte, not of none: dumps into files do not fit, and dumps through a pipe to a
    // collecting program, which zero does not concern, are refused by the kernel for exactly this
    // value. PR_SET_DUMPABLE would do too, but hides /proc/self from desktop portals.
    const rlimit limit{1, 1};
    ::setrlimit(RLIMIT_CORE, &limit);
}

void requireThreads(int count) {
    std::latch release(1);
    std::vector<std::jthread> threads;
    try {
        for (int i = 0; i < count; ++i)
            threads.emplace_back([&release] { release.wait(); });
    } catch (const std::system_error& error) {
        release.count_down();
        throw std::system_error(error.code(), "starting threads");
    }
    release.count_down();
}

} // namespace tokwatch

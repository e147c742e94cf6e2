#include "Platform/Linux/ProcessStart.h"

#include "Platform/System/FileDescriptor.h"

#include <fcntl.h>
#include <langinfo.h>
#include <locale.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <latch>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace tokwatch {

void ensureUTF8Locale() {
    const locale_t chosen = ::newlocale(LC_ALL_MASK, "", nullptr);
    const bool isUTF8 =
        chosen != nullptr && std::string_view(::nl_langinfo_l(CODESET, chosen)) == "UTF-8";
    if (chosen != nullptr) ::freelocale(chosen);
    // LC_ALL, as it may be what asks for the other encoding and goes before all else.
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there are no other threads yet.
    if (!isUTF8) ::setenv("LC_ALL", "C.UTF-8", 1);
}

void preventCoreDumps() {
    // A limit of one byte, not of none: dumps into files do not fit, and dumps through a pipe to a
    // collecting program, which zero does not concern, are refused by the kernel for exactly this
    // value. PR_SET_DUMPABLE would do too, but hides /proc/self from desktop portals.
    const rlimit limit{1, 1};
    ::setrlimit(RLIMIT_CORE, &limit);
}

void fillStandardDescriptors() {
    constexpr std::pair<int, int> wanted[] = {
        {STDIN_FILENO, O_WRONLY}, {STDOUT_FILENO, O_RDONLY}, {STDERR_FILENO, O_WRONLY}};
    // In this order, as a new descriptor has the lowest number that is free.
    for (const auto& [number, mode] : wanted)
        if (::fcntl(number, F_GETFD) < 0 && ::open("/dev/null", mode) != number) return;
}

void prepareCommand() {
    fillStandardDescriptors();
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    preventCoreDumps();
}

int runWindows(const char* program, const std::function<int()>& run) {
    try {
        return run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: starting failed: %s\n", program, error.what());
        return 1;
    }
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

void requireDescriptors(int count) {
    std::vector<FileDescriptor> held;
    for (int i = 0; i < count; ++i) {
        held.emplace_back(::open("/", O_PATH | O_CLOEXEC));
        if (!held.back().isOpen())
            throw std::system_error(errno, std::generic_category(), "opening files");
    }
}

void requireAddressSpace(std::size_t bytes) {
    rlimit limit{};
    if (::getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return;
    constexpr int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
    void* const reserved = ::mmap(nullptr, bytes, PROT_NONE, flags, -1, 0);
    if (reserved == MAP_FAILED)
        throw std::system_error(errno, std::generic_category(), "reserving address space");
    ::munmap(reserved, bytes);
}

} // namespace tokwatch

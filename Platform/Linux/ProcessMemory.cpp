#include "Platform/Linux/ProcessMemory.h"

#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <span>

namespace tokwatch {
namespace {

/// What the program or library has from its file and never writes to: relocations are applied in
/// segments that are writable, even where they are protected afterwards.
int giveBackUnwritten(dl_phdr_info* loaded, std::size_t, void*) {
    const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    for (const auto& segment : std::span(loaded->dlpi_phdr, loaded->dlpi_phnum)) {
        if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) != 0) continue;
        const std::uintptr_t begin = (loaded->dlpi_addr + segment.p_vaddr) & ~(page - 1);
        const std::uintptr_t end = loaded->dlpi_addr + segment.p_vaddr + segment.p_memsz;
        ::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
    }
    return 0;
}

} // namespace

void giveBackMemory() {
    ::malloc_trim(0);
    ::dl_iterate_phdr(giveBackUnwritten, nullptr);
}

void keepMemorySmall() {
    constexpr int heaps = 2;
    constexpr int large = 262'144; // bytes
    // NOLINTBEGIN(concurrency-mt-unsafe): before there are threads.
    ::mallopt(M_ARENA_MAX, heaps);
    // Set, they stay as they are; by themselves they follow the largest piece that was ever freed.
    ::mallopt(M_MMAP_THRESHOLD, large);
    ::mallopt(M_TRIM_THRESHOLD, large);
    // NOLINTEND(concurrency-mt-unsafe)
}

} // namespace tokwatch

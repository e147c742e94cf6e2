#pragma once

#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tokwatch::testing {

inline std::size_t entriesOf(const char* directory) {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(directory), {}));
}

inline std::size_t openDescriptors() {
    return entriesOf("/proc/self/fd");
}

inline std::size_t runningThreads() {
    return entriesOf("/proc/self/task");
}

/// In bytes.
inline std::size_t residentMemory() {
    std::ifstream statm("/proc/self/statm");
    std::size_t size = 0;
    std::size_t resident = 0;
    statm >> size >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

} // namespace tokwatch::testing

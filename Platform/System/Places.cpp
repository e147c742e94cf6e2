#include "Platform/System/Places.h"

#include <dlfcn.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <system_error>
#include <vector>

namespace tokwatch {
namespace {

std::filesystem::path homeOfAccount() {
    std::vector<char> buffer(16'384);
    struct passwd account = {};
    struct passwd* found = nullptr;
    if (getpwuid_r(getuid(), &account, buffer.data(), buffer.size(), &found) != 0 ||
        found == nullptr)
        return {};
    return found->pw_dir;
}

std::filesystem::path directoryNow() {
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path();
}

// The system follows the program when it is moved out of the way, and tells of a place that is
// gone once it is removed there, whatever took its own.
// NOLINTNEXTLINE(cert-err58-cpp): where there is no memory for a path, nothing starts.
const std::filesystem::path directoryAtStart = directoryNow();

} // namespace

std::filesystem::path programDirectory() {
    return directoryAtStart;
}

std::filesystem::path ourProgram(std::string_view name) {
    for (const std::filesystem::path& directory : {directoryAtStart, directoryNow()}) {
        for (const char* place : {"", "../libexec/tokwatch", "../../bin"}) {
            std::error_code ignored;
            std::filesystem::path program = (directory / place / name).lexically_normal();
            if (std::filesystem::exists(program, ignored)) return program;
        }
    }
    return directoryAtStart / name;
}

std::filesystem::path libraryDirectory(const void* address) {
    Dl_info info{};
    if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) return {};
    const std::filesystem::path library(info.dli_fname);
    return library.is_absolute() ? library.parent_path() : std::filesystem::path();
}

std::filesystem::path homeDirectory() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the main thread alone asks and changes.
    const char* home = std::getenv("HOME");
    std::filesystem::path given(home == nullptr ? "" : home);
    return given.is_absolute() ? given : homeOfAccount();
}

} // namespace tokwatch

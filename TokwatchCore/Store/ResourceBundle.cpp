#include "ResourceBundle.h"

#include "SystemLog.h"

#include <dlfcn.h>

#include <array>
#include <system_error>

namespace tokwatch {
namespace {

constexpr const char* bundleName = "Tokwatch_TokwatchCore.bundle";

std::filesystem::path programDirectory() {
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path();
}

/// The directory of whatever this code was linked into: the program, or a shared library of it.
std::filesystem::path libraryDirectory() {
    Dl_info info{};
    static const int marker = 0;
    if (dladdr(&marker, &info) == 0 || info.dli_fname == nullptr) return {};
    return std::filesystem::path(info.dli_fname).parent_path();
}

std::filesystem::path find() {
    for (const std::filesystem::path& base : std::array{programDirectory() / "../share/tokwatch",
                                                        libraryDirectory(), programDirectory()}) {
        std::error_code ignored;
        std::filesystem::path bundle = base / bundleName;
        if (std::filesystem::is_directory(bundle, ignored)) return bundle;
    }
    fatal("unable to find bundle named Tokwatch_TokwatchCore");
}

} // namespace

const std::filesystem::path& coreResourceBundle() {
    static const std::filesystem::path bundle = find();
    return bundle;
}

} // namespace tokwatch

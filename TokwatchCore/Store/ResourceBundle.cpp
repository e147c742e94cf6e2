#include "TokwatchCore/Store/ResourceBundle.h"

#include "TokwatchCore/Support/SystemLog.h"

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

/// The directory of the shared library that this code was linked into. For the program itself the
/// loader knows only the name it was called by, which may be relative to anything: none then.
std::filesystem::path libraryDirectory() {
    Dl_info info{};
    static const int marker = 0;
    if (dladdr(&marker, &info) == 0 || info.dli_fname == nullptr) return {};
    const std::filesystem::path library(info.dli_fname);
    return library.is_absolute() ? library.parent_path() : std::filesystem::path();
}

std::filesystem::path find() {
    for (const std::filesystem::path& base : std::array{programDirectory() / "../share/tokwatch",
                                                        libraryDirectory(), programDirectory()}) {
        if (base.empty()) continue;
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

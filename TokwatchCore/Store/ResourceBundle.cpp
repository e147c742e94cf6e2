#include "TokwatchCore/Store/ResourceBundle.h"

#include "Platform/System/Places.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <array>
#include <system_error>

namespace tokwatch {
namespace {

constexpr const char* bundleName = "Tokwatch_TokwatchCore.bundle";

std::filesystem::path find() {
    static const int marker = 0; // lies where this library is
    for (const std::filesystem::path& base :
         std::array{programDirectory() / "../share/tokwatch",
                    programDirectory() / "../../share/tokwatch", // from libexec/tokwatch
                    libraryDirectory(&marker), programDirectory()}) {
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

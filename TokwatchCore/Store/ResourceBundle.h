#pragma once

#include <filesystem>

namespace tokwatch {

/// The directory "Tokwatch_TokwatchCore.bundle" with the core library's resources. Looked for once,
/// on first use: in ../share/tokwatch beside the program's directory, beside the core library,
/// beside the program. None there is a broken installation: the program stops with "unable to find
/// bundle named Tokwatch_TokwatchCore".
const std::filesystem::path& coreResourceBundle();

} // namespace tokwatch

#pragma once

#include "Tokwatch/CommandLine/Doctor.h"

#include <filesystem>
#include <vector>

namespace tokwatch {

/// The doctor's look at whether the system can watch these directories with all below them, of
/// which some may be missing.
Finding examineWatches(const std::vector<std::filesystem::path>& roots);

} // namespace tokwatch

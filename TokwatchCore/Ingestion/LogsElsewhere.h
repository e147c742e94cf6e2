#pragma once

#include "TokwatchCore/Ingestion/ProviderLocations.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tokwatch {

/// An assistant's logs in a place that is not read.
struct LogsElsewhere {
    ProviderID provider = ProviderID::claude;
    std::filesystem::path folder; ///< the assistant's own, above its logs
    std::string toldBy;           ///< "CLAUDE_CONFIG_DIR"; empty for a place that is usual, too
    /// What makes them visible, as a line for a shell: a link in the home. Should logs be in both
    /// places, those of the home step aside; what was counted of them stays.
    std::string remedy;
};

/// By the variables that move the assistants' folders, and where Claude Code keeps its files on
/// some machines. Looks only whether folders exist.
std::vector<LogsElsewhere>
logsElsewhere(const ProviderLocations& locations,
              const std::function<std::optional<std::string>(const char* name)>& variable);
/// By the variables of this process.
std::vector<LogsElsewhere> logsElsewhere(const ProviderLocations& locations);

} // namespace tokwatch

#pragma once

#include "TokwatchCore/Records/ProviderID.h"

#include <filesystem>
#include <vector>

namespace tokwatch {

/// Where each assistant keeps its files, under one home directory.
struct ProviderLocations {
    std::filesystem::path home;

    /// Where the assistant's logs are, in the order of reading; Cursor keeps none.
    std::vector<std::filesystem::path> logRoots(ProviderID provider) const;
    /// Those of all assistants.
    std::vector<std::filesystem::path> allLogRoots() const;
    /// Where the assistant keeps its login.
    std::filesystem::path claudeAuthFile() const { return home / ".claude/.credentials.json"; }
    std::filesystem::path codexAuthFile() const { return home / ".codex/auth.json"; }
    /// The state database of Cursor: the place of its macOS edition, or of its Linux one where that
    /// exists.
    std::filesystem::path cursorStateDB() const;
    /// The place of its Linux edition.
    std::filesystem::path cursorStateDBOnLinux() const;

    /// Whether the assistant left traces here. Asks only whether paths exist, not what they hold.
    bool isPresent(ProviderID provider) const;
};

} // namespace tokwatch

#pragma once

#include <filesystem>
#include <optional>

namespace tokwatch {

/// Where the program finds and keeps its files on this desktop.
struct UserPaths {
    std::filesystem::path home; ///< where the assistants' files are
    std::optional<std::filesystem::path>
        dataHome; ///< $XDG_DATA_HOME; none when it cannot be determined

    /// The user's own: $HOME (else the password database's), $XDG_DATA_HOME (else ~/.local/share).
    static UserPaths current();

    /// "…/Tokwatch/usage.sqlite"; none without a data home.
    std::optional<std::filesystem::path> database() const;
    /// The directory that the widget shares with the application; none without a data home.
    std::optional<std::filesystem::path> snapshotDirectory() const;
};

} // namespace tokwatch

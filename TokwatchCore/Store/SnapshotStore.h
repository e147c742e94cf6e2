#pragma once

#include "TokwatchCore/Store/Snapshot.h"

#include <filesystem>
#include <optional>
#include <stdexcept>

namespace tokwatch {

/// The snapshot's file, "snapshot.json" with ISO 8601 dates, in a directory that the application
/// shares with its widgets. Callable from any thread; writers take turns by replacing the file.
class SnapshotStore {
  public:
    /// The shared directory's name; it stands in the data home.
    static constexpr const char* appGroup = "Q7K2M9X4PL.app.tokwatch";

    static std::filesystem::path fileIn(const std::filesystem::path& directory);

    /// There is no shared directory, hence no widget either.
    class NoContainer : public std::runtime_error {
      public:
        NoContainer();
    };

    /// Without a directory `write` throws NoContainer, and `read` finds nothing.
    explicit SnapshotStore(std::optional<std::filesystem::path> directory);

    /// Replaces the file as a whole, so that no reader meets half of it. The file is private to the
    /// user, and so is the directory where it has to be made. Failures of the file system are
    /// std::system_error.
    void write(const Snapshot& snapshot) const;

    /// The stored snapshot; none when it is missing, unreadable or of another build's shape.
    std::optional<Snapshot> read() const;

  private:
    std::optional<std::filesystem::path> directory;
};

} // namespace tokwatch

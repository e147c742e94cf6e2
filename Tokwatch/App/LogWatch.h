#pragma once

#include "Platform/Seams/FileEventStream.h"
#include "Tokwatch/Indexing/IndexerService.h"
#include "Tokwatch/Watching/DirectoryWatcher.h"
#include "TokwatchCore/Ingestion/ProviderLocations.h"
#include "TokwatchCore/Records/ProviderID.h"

#include <QObject>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace tokwatch {

/// Tells which logs change below the providers' roots, also below roots that come later. Main
/// thread only.
class LogWatch : public QObject {
  public:
    using LogOwner = std::function<std::optional<ProviderID>(std::string_view path)>;

    /// `onChange` gets the changed logs, or no scope where any of them may have.
    LogWatch(ProviderLocations locations, LogOwner logOwner, OpenFileEventStream open,
             std::function<void(const IndexScope& changed)> onChange);

    /// Also for a watch that ended by itself, and where a root came, went or became another
    /// directory, of which the stream may not have heard; does nothing where neither happened.
    void begin();
    void end();
    bool hasBegun() const { return watcher != nullptr; }
    /// Not where it could not begin, or ended by itself.
    bool isRunning() const { return watcher && watcher->isRunning(); }

  private:
    /// A directory: its path without symbolic links, its device and its inode.
    using Place = std::tuple<std::filesystem::path, std::uint64_t, std::uint64_t>;

    static std::optional<Place> placeOf(const std::filesystem::path& root);
    void pathsChanged(const std::vector<std::string>& paths) const;

    const ProviderLocations locations;
    const LogOwner logOwner;
    const OpenFileEventStream open;
    const std::function<void(const IndexScope& changed)> onChange;
    std::vector<std::optional<Place>> watchedPlaces; ///< the roots' when it began
    std::unique_ptr<DirectoryWatcher> watcher;
};

} // namespace tokwatch

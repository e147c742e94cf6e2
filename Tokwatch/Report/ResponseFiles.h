#pragma once

#include "Tokwatch/Report/FileResponses.h"
#include "TokwatchCore/Ingestion/LogFiles.h"
#include "TokwatchCore/Ingestion/ProviderLocations.h"
#include "TokwatchCore/Support/Date.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

namespace tokwatch {

/// What the logs say, and what of them says nothing.
struct LogReading {
    /// Of the files in the order of providers, roots and paths, so that results do not depend on
    /// timing.
    std::vector<std::shared_ptr<const FileResponses>> files;
    std::vector<LogListing::Failure> unread; ///< files and folders that are there
    std::vector<std::string> gone;           ///< files that went away before they were read
};

/// Reads whole log files and remembers them by inode, size and time, so that another look reads
/// again what has changed. Belongs to one thread at a time, and shares the work with as many as
/// there are cores, four at most.
///
/// Remembers 13 MB of a gigabyte of logs (112,589 responses in 2,100 files), and nothing of files
/// that have gone.
class ResponseFiles {
  public:
    /// Bytes read and bytes to read; called on the caller's thread.
    using Progress = std::function<void(std::int64_t read, std::int64_t all)>;

    explicit ResponseFiles(ProviderLocations locations, KeepLines keep = KeepLines::last);

    /// What these providers' files say that were touched at this moment or later. Ends soon once it
    /// is to stop: the reading lacks files then, and those that were read are remembered.
    LogReading read(std::span<const ProviderID> providers, Date touchedSince,
                    const Progress& progress = {}, const std::stop_token& stop = {});

  private:
    struct Known {
        LogFile file;
        ProviderID provider = ProviderID::claude;
        std::string root;
        bool isAskedFor = false;                        ///< else only remembered
        std::shared_ptr<const FileResponses> responses; ///< none where reading failed
        std::string failure;
        bool isGone = false;
    };

    void list(std::span<const ProviderID> providers, Date touchedSince, LogReading& reading);
    void readListed(const Progress& progress, const std::stop_token& stop);
    static void read(Known& file, class ResponseReader& reader);

    ProviderLocations locations;
    KeepLines keep;
    std::vector<Known> listed;
};

} // namespace tokwatch

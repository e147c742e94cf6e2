#pragma once

#include "Platform/System/FileAccess.h"
#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Support/Date.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace tokwatch {

struct LogFile {
    std::string path; ///< any bytes but NUL
    FileAttributes attributes;
};

Date modifiedAt(const LogFile& file);

struct LogListing {
    struct Failure {
        std::string path;
        std::string reason; ///< "Permission denied"
    };
    std::vector<LogFile> files;
    std::vector<Failure> failures; ///< what could not be listed; the rest was
};

/// Whether a file of this name holds the provider's usage.
bool isLogName(ProviderID provider, std::string_view fileName);

/// The provider's log files under one root, recursively, in the order of their paths' bytes. Hidden
/// entries and symbolic links below the root are passed over. A root that does not exist has no
/// files.
LogListing findLogFiles(ProviderID provider, const std::filesystem::path& root);

/// What of a path lies below the root, as the root is named or, where that name leads through
/// links, as it really is; none for other paths.
std::optional<std::string_view> pathBelow(const std::filesystem::path& root, std::string_view path);

/// Whether a file could not be read because it was renamed or removed since it was listed.
bool isGone(const std::error_code& failure);

/// Tells which logs, by their paths as listed, are gone from the roots that hold anything: a root
/// that is not there, or empty, may be on a disk that is not mounted.
class DeletedLogs {
  public:
    explicit DeletedLogs(const std::vector<std::filesystem::path>& logRoots);
    bool operator()(const std::string& path) const;

  private:
    std::vector<std::string> roots; ///< with a slash behind them
};

/// The one file of `findLogFiles` that is at this path, in either form; its path is in the root's.
std::optional<LogFile> findLogFile(ProviderID provider, const std::filesystem::path& root,
                                   std::string_view path);

} // namespace tokwatch

#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace tokwatch {

/// How far one log file has been read. Kept by the store under the file's path.
struct FileCursor {
    std::string path;
    std::uint64_t inode =
        0; ///< the file's number when the cursor was taken; another one means another file
    std::int64_t offset = 0; ///< just past the last complete line that was consumed, in bytes
    /// What must survive between passes over this file: "provider" (set by the indexer) and the
    /// parser's own.
    std::map<std::string, std::string> context;

    friend bool operator==(const FileCursor&, const FileCursor&) = default;
};

} // namespace tokwatch

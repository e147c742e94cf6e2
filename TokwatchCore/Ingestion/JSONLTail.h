#pragma once

#include "TokwatchCore/Ingestion/LogFiles.h"
#include "TokwatchCore/Records/FileCursor.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace tokwatch {

/// The memory that a read fills. Kept by the caller, so that reading many files allocates once.
class TailBuffer {
  public:
    char* data() { return bytes.get(); }
    std::size_t capacity() const { return size; }
    /// Makes room for at least `wanted` bytes; the first `used` bytes are kept.
    void grow(std::size_t wanted, std::size_t used);
    /// Gives memory beyond `most` bytes back, once an uncommonly long line has been dealt with.
    void shrink(std::size_t most);

  private:
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;
};

/// Reads append-only files of JSON lines from where the last read stopped. Has no state.
struct JSONLTail {
    /// The window of one read in the indexer: a log of any size is read in slices of this many
    /// bytes.
    static constexpr std::int64_t sliceBytes = 8'388'608;

    struct Result {
        /// The complete lines in file order, without their line feed or CR LF. They point into the
        /// buffer.
        std::vector<std::string_view> lines;
        FileCursor cursor;
        std::int64_t bytesRead = 0; ///< consumed by this read
        bool reset = false;         ///< a cursor existed but the file was replaced or shrank
        FileAttributes file;        ///< as it was read; as listed where it was not opened
    };

    /// Reads at most `maxBytes` (more only when one line is longer) from the cursor's offset, up to
    /// the last complete line. A file that was replaced or shrank is read from its start with an
    /// empty context. A file that was not longer than that when it was listed is not opened. Throws
    /// std::system_error when the file cannot be examined, opened or read.
    static Result read(const LogFile& file, const std::optional<FileCursor>& cursor,
                       std::int64_t maxBytes, TailBuffer& buffer);
};

/// The longest line that the indexer takes into memory, in bytes: a thousand times the longest that
/// assistants are known to write. A longer one is no log.
inline constexpr std::int64_t longestLine = 536'870'912;

/// Steps over a line of more than `longestLine` bytes at the cursor, whether or not it has ended,
/// without keeping it: the result has no lines. Goes at most about `longestLine` bytes in one call;
/// the cursor's context remembers that the rest is still to be stepped over. None where the line
/// there is an ordinary one, to be read as usual. Throws as `JSONLTail::read` does.
std::optional<JSONLTail::Result> skipOverlongLine(const std::filesystem::path& file,
                                                  const std::optional<FileCursor>& cursor);

/// One step through a listed file: a line that is too long is stepped over, else a slice is read.
/// Throws as `JSONLTail::read` does.
JSONLTail::Result readSlice(const LogFile& file, const std::optional<FileCursor>& cursor,
                            std::int64_t maxBytes, TailBuffer& buffer);

} // namespace tokwatch

#pragma once

#include "ClaudeLogParser.h"
#include "CodexLogParser.h"
#include "FileCursor.h"
#include "JSONLTail.h"
#include "LimitRecords.h"
#include "LogFiles.h"
#include "UsageEvent.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace tokwatch {

/// A log file with unread bytes, and where its reading goes on.
struct PendingFile {
    ProviderID provider = ProviderID::claude;
    LogFile file;
    std::optional<FileCursor> cursor; ///< as stored
};

/// What one read of one file brought.
struct Slice {
    std::size_t file = 0; ///< index of the pending file
    std::vector<UsageEvent> events;
    std::optional<ProviderLimits> limits; ///< Codex: the latest that the slice names
    FileCursor cursor;
    bool cursorMoved = false; ///< `cursor` differs from what is stored
    std::int64_t bytes = 0;   ///< consumed
    std::string failure;      ///< why the file could not be read further; empty when it could
};

/// Reads pending files in order, slice by slice, and parses what it reads. Knows no store, so that
/// it may run ahead of the writer on a thread of its own.
class SliceReader {
  public:
    explicit SliceReader(const std::vector<PendingFile>& pendingFiles);

    /// The next slice; none when all files have been read to their last complete line.
    std::optional<Slice> next();

  private:
    Slice readLines(const PendingFile& pending);
    Slice readDocument(const PendingFile& pending);
    void parseClaude(Slice& slice, const JSONLTail::Result& read);
    void parseCodex(Slice& slice, JSONLTail::Result& read);
    void collect(Slice& slice, UsageEvent event);

    const std::vector<PendingFile>& files;
    std::size_t at = 0;
    std::optional<FileCursor> reached; ///< in the present file, after its slices so far
    TailBuffer buffer;
    ClaudeLogParser claude;
    std::unordered_map<std::string, std::size_t>
        positions; ///< of the slice's keys among its events
};

/// Whether a Grok document has changed since its cursor was taken.
bool isChangedDocument(const LogFile& file, const std::optional<FileCursor>& cursor);

} // namespace tokwatch

#pragma once

#include "Tokwatch/Indexing/SliceEvents.h"
#include "TokwatchCore/Ingestion/ClaudeLogParser.h"
#include "TokwatchCore/Ingestion/CodexLogParser.h"
#include "TokwatchCore/Ingestion/JSONLTail.h"
#include "TokwatchCore/Ingestion/LogFiles.h"
#include "TokwatchCore/Records/FileCursor.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Records/UsageEvent.h"
#include "TokwatchCore/Support/Date.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
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
    std::optional<ProviderLimits> limits; ///< Codex: the newest that the slice names
    FileCursor cursor;                    ///< before the first line of what is held back
    bool cursorMoved = false;             ///< `cursor` differs from what is stored
    /// The file ends in a response that may go on; until then it waits for another pass.
    std::optional<Date> heldUntil;
    std::int64_t bytes = 0;  ///< consumed
    std::string failure;     ///< why the file could not be read further; empty when it could
    bool isShortage = false; ///< that is no fault of the file's: it can be read once there is room
};

/// Reads pending files slice by slice and parses what it reads. Knows no store, so that it may run
/// ahead of the writer on a thread of its own, beside others like it.
class SliceReader {
  public:
    SliceReader(const std::vector<PendingFile>& pendingFiles, Clock clock);

    void begin(std::size_t file);

    /// The next slice of the file that was begun, one at least; none when it has been read to its
    /// last complete line.
    std::optional<Slice> next();

  private:
    Slice read(const PendingFile& pending);
    Slice readLines(const PendingFile& pending);
    Slice readDocument(const PendingFile& pending);
    void parseClaude(const JSONLTail::Result& read);
    void parseCodex(Slice& slice, JSONLTail::Result& read);
    bool isAtEnd(std::int64_t bytes) const;

    const std::vector<PendingFile>& files;
    Clock now;
    std::size_t present = 0;
    LogFile log;                       ///< the present file, as it was last read
    bool isRead = false;               ///< the present file
    std::optional<FileCursor> reached; ///< in the present file, after its slices so far
    std::optional<FileCursor> given;   ///< with the last of them
    TailBuffer buffer;
    ClaudeLogParser claude;
    SliceEvents events; ///< of the present file, not yet given
};

/// Takes a reading of the limits over when it is not older than the one known: sessions are read
/// one after the other, so the last to be read is not always the newest. Whether it was taken over.
bool replaceIfNewer(std::optional<ProviderLimits>& known, ProviderLimits reading);

/// Whether a Grok document has changed since its cursor was taken.
bool isChangedDocument(const LogFile& file, const std::optional<FileCursor>& cursor);

} // namespace tokwatch

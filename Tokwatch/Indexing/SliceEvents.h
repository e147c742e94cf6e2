#pragma once

#include "TokwatchCore/Ingestion/ClaudeLogParser.h"
#include "TokwatchCore/Records/UsageEvent.h"
#include "TokwatchCore/Support/Date.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace tokwatch {

/// The events of one log file in the order of its lines, slice by slice. Lines of one response
/// repeat its key and replace each other: the last one has the final counts.
///
/// While assistants write, a file may end between the lines of a response, and so does every slice
/// of a large one. Once a response is counted its key is known and later lines count for nothing;
/// so every response whose newest line has a null "stop_reason" stays open, however many write
/// into one log by turns. Its event goes over to the next slice. At the end of the file it waits
/// for a later pass, but only while its newest line is young: logs of older versions end in such
/// lines, and so do those of sessions that were killed. The last response of a file waits longest:
/// between the line of what it says and that of a file which it writes minutes can pass.
class SliceEvents {
  public:
    /// How long after its newest line a response may still go on while others follow it, and how
    /// far ahead of our clock that line may be dated. Of one that is dated further ahead, by a
    /// clock that differs from ours, the file's time is taken.
    static constexpr Seconds patience{60};
    /// The same of a file's last response: 50,000 tokens at 60 a second.
    static constexpr Seconds lastPatience{900};
    /// How far behind the last line read, in bytes, the first line of an open response may lie.
    /// What follows that line is read again by each pass until the response is complete, and its
    /// keys see to it that nothing counts twice; this much takes tens of milliseconds. More than
    /// assistants write within a minute, their agents' output between two lines included.
    static constexpr std::int64_t mostReadAgain = 67'108'864;
    /// How many of the newest responses may be open: far more than assistants begin in a minute,
    /// and little memory where a log never names a reason.
    static constexpr std::size_t mostOpen = 4096;

    void add(UsageEvent event);
    /// `offset`: where the line begins in the file, in bytes.
    void add(ClaudeLine line, std::int64_t offset);

    /// At the end of the file, where the age of the newest lines counts, too. Two moments, as much
    /// time may lie between them: of a process that was stopped, of a machine that slept. What came
    /// meanwhile was not read, or is younger than the first.
    struct End {
        Date before;  ///< the file was read
        Date after;   ///< that
        Date written; ///< when the file was changed
    };
    /// The complete events of what was read, which ends at this offset; those still open stay.
    std::vector<UsageEvent> take(std::int64_t offset, const std::optional<End>& end);

    /// Begins with another file; open responses are dropped.
    void clear();

    struct Open {
        std::int64_t firstLine = 0; ///< where the next pass has to go on
        Date completeAt;            ///< when the first of them is complete as it is
    };
    /// What all responses that `take` left open together ask for; none without any.
    std::optional<Open> open() const;

  private:
    struct Lines {
        std::int64_t first = 0; ///< where it begins
        bool isUnfinished = false;
        Date completeAt{}; ///< as it is, where it was left open
    };

    void put(UsageEvent event, Lines lines);
    Seconds patienceFor(std::size_t position) const;
    Date newestLine(std::size_t position, const End& end) const;
    bool isOpen(std::size_t position, std::int64_t offset, const std::optional<End>& end) const;

    std::vector<UsageEvent> events;                         ///< in the order of their first lines
    std::vector<Lines> lines;                               ///< of each of them
    std::unordered_map<std::string, std::size_t> positions; ///< of the keys among the events
    bool haveLast = true; ///< the last of these is the last that was read; not where that was taken
};

} // namespace tokwatch

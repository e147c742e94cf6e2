#pragma once

#include "TokwatchCore/Ingestion/ClaudeLogParser.h"
#include "TokwatchCore/Records/UsageEvent.h"
#include "TokwatchCore/Support/Date.h"

#include <array>
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
/// While an assistant writes, a file may end between the lines of a response, and so does every
/// slice of a large one. Once a response is counted its key is known and later lines count for
/// nothing; so the last response of the conversation, and that of its agents, stays open while its
/// newest line has a null "stop_reason". Its event goes over to the next slice. At the end of the
/// file it waits for a later pass, but only while its newest line is young: logs of older versions
/// end in such lines, and so do those of sessions that were killed.
class SliceEvents {
  public:
    /// How long after its newest line a response may still go on, and how far ahead of our clock
    /// that line may be dated.
    static constexpr Seconds patience{60};

    void add(UsageEvent event);
    /// `offset`: where the line begins in the file, in bytes.
    void add(ClaudeLine line, std::int64_t offset);

    /// No more lines are there at present, and this is where they end. Responses that do not wait
    /// are complete as they are.
    void endFile(Date now, std::int64_t end);

    /// The complete events; those still open stay.
    std::vector<UsageEvent> take();

    /// Begins with another file; open responses are dropped.
    void clear();

    struct Open {
        std::int64_t firstLine = 0; ///< where the next pass has to go on
        Date completeAt;            ///< when the last of them is complete as it is
    };
    /// What all open responses together ask for; none without any.
    std::optional<Open> open() const;

  private:
    std::size_t put(UsageEvent event, std::int64_t offset);
    bool isToWait(std::size_t position, Date now, std::int64_t end) const;

    std::vector<UsageEvent> events;
    std::vector<std::int64_t> firstLines;                   ///< of the events' responses
    std::unordered_map<std::string, std::size_t> positions; ///< of the keys among the events
    std::array<std::optional<std::size_t>, 2> openOnes;     ///< the conversation's, its agents'
};

} // namespace tokwatch

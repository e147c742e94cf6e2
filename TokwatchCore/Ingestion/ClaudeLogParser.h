#pragma once

#include "TokwatchCore/Ingestion/LineVerdict.h"
#include "TokwatchCore/Records/UsageEvent.h"
#include "TokwatchCore/Support/SharedText.h"

#include <memory>
#include <optional>
#include <string_view>

namespace tokwatch {

class JSONReader;

/// A line of a response with tokens to count.
struct ClaudeLine {
    UsageEvent event;
    /// An explicit null "stop_reason": further lines of the response, with higher counts, may
    /// follow. Lines that do not name a reason at all say nothing of the kind.
    bool isUnfinished = false;
    /// Where the assistant worked; empty where the line does not say. Valid until the next line is
    /// parsed: most readers have no use for a copy.
    std::string_view directory = {};
};

/// Turns lines of Claude Code's session logs into events. Lines do not depend on each other; the
/// parser only keeps memory to parse in, so one belongs to one thread at a time.
class ClaudeLogParser {
  public:
    ClaudeLogParser();
    ~ClaudeLogParser();

    /// The event of an assistant's response with tokens to count; none for every other line,
    /// malformed ones included. Its key is the response's own id, so that the several lines of one
    /// response count once.
    std::optional<UsageEvent> parse(std::string_view line);
    /// The same, with what tells whether the response goes on.
    std::optional<ClaudeLine> parseLine(std::string_view line);
    /// What the last line came to.
    LineVerdict verdict() const { return last; }

  private:
    std::optional<ClaudeLine> none(LineVerdict why);

    LineVerdict last = LineVerdict::other;
    SharedText session; ///< of the last response, as most lines of a log name the same
    SharedText model;
    std::unique_ptr<JSONReader> reader;
};

} // namespace tokwatch

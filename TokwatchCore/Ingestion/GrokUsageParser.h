#pragma once

#include "TokwatchCore/Records/UsageEvent.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace tokwatch {

struct GrokDocument {
    std::vector<UsageEvent> events;
    std::int64_t untimed =
        0;                ///< usage in turns without a number or a time, which counts for nothing
    bool isWhole = false; ///< a document of a session
};

/// Reads Grok's session files: one JSON document each, rewritten as the session goes on.
struct GrokUsageParser {
    /// One event for each model of each turn, in the document's order; none when the document is
    /// malformed. Keys are "session#turn#model", so that a rewritten file counts only what is new
    /// in it.
    static std::vector<UsageEvent> parse(std::string_view document);
    /// The same, with what counts for nothing.
    static GrokDocument read(std::string_view document);
};

} // namespace tokwatch

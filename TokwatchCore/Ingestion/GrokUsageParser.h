#pragma once

#include "TokwatchCore/Records/UsageEvent.h"

#include <string_view>
#include <vector>

namespace tokwatch {

/// Reads Grok's session files: one JSON document each, rewritten as the session goes on.
struct GrokUsageParser {
    /// One event for each model of each turn, in the document's order; none when the document is
    /// malformed. Keys are "session#turn#model", so that a rewritten file counts only what is new
    /// in it.
    static std::vector<UsageEvent> parse(std::string_view document);
};

} // namespace tokwatch

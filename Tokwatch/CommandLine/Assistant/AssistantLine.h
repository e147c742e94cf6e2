#pragma once

#include "Tokwatch/CommandLine/Assistant/SessionStatus.h"
#include "Tokwatch/CommandLine/Terminal/Terminal.h"
#include "Tokwatch/Display/UsageAmount.h"
#include "Tokwatch/Preferences/PlainSettings.h"
#include "TokwatchCore/Records/RecordCoding.h"
#include "TokwatchCore/Support/NamedCases.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tokwatch {

/// What a status line can tell, in the order in which it does unless it is told another.
enum class LinePart { model, context, cost, session, week, today };
template<>
inline constexpr std::array<std::string_view, 6> caseNames<LinePart>{"model",   "context", "cost",
                                                                     "session", "week",    "today"};

/// All that is known when the line is made.
struct AssistantFacts {
    std::optional<SessionStatus> status;  ///< absent where nothing legible was told
    std::optional<ProviderLimits> limits; ///< Claude's, stored and told ones together
    std::optional<UsageAmount> today;     ///< of all assistants; absent without a store
};

/// One line, never empty, in the terminal's colours where it has any: what is told of no part is
/// left out. A limit has the colour of its severity, and a number that is no longer current is dim.
std::string assistantLine(const AssistantFacts& facts, const std::vector<LinePart>& parts,
                          const PlainSettings& settings, const Terminal& terminal, Date now);

/// The same facts for programs, whatever the line has of them.
Json assistantJson(const AssistantFacts& facts);

} // namespace tokwatch

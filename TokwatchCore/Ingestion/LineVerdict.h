#pragma once

#include "TokwatchCore/Support/NamedCases.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace tokwatch {

/// What a line of a log came to, for people who doubt a sum.
enum class LineVerdict {
    counted,     ///< it has tokens to count
    other,       ///< none are to be expected in it: a prompt, tool output, what a session is about
    noUsage,     ///< a response without tokens
    noTime,      ///< a response of nobody knows when
    unknownForm, ///< a response without what tells it from others, or no object at all
    synthetic,   ///< a response that the assistant made up itself, for which no model was asked
    cut,         ///< no valid JSON: cut by a crash, or glued to the next line
    cumulative,  ///< the running total of a session, as older versions of Codex wrote it alone
};

template<>
inline constexpr std::array<std::string_view, 8> caseNames<LineVerdict>{
    "counted", "other", "noUsage", "noTime", "unknownForm", "synthetic", "cut", "cumulative",
};

} // namespace tokwatch

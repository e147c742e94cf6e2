#pragma once

#include <string_view>

namespace tokwatch {

/// Whether a limit is used up faster or slower than its window's time runs out.
enum class Pace { under, onPace, over, unknown };

/// The name of the symbol beside the caption; empty for `unknown`, which shows no pace line.
std::string_view symbolName(Pace pace);
std::string_view caption(Pace pace);

} // namespace tokwatch

#pragma once

#include <cstdint>

namespace tokwatch {

/// Sums and differences of token counts. A result beyond 64 bits stops the program: a wrapped sum
/// would be shown to the user as a plausible lie.
std::int64_t checkedAdd(std::int64_t a, std::int64_t b);
std::int64_t checkedSubtract(std::int64_t a, std::int64_t b);

} // namespace tokwatch

#include "CheckedArithmetic.h"

#include "SystemLog.h"

namespace tokwatch {

std::int64_t checkedAdd(std::int64_t a, std::int64_t b) {
    std::int64_t result = 0;
    if (__builtin_add_overflow(a, b, &result)) fatal("a sum of token counts exceeds 64 bits");
    return result;
}

std::int64_t checkedSubtract(std::int64_t a, std::int64_t b) {
    std::int64_t result = 0;
    if (__builtin_sub_overflow(a, b, &result))
        fatal("a difference of token counts exceeds 64 bits");
    return result;
}

} // namespace tokwatch

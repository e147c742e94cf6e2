#include "TokwatchCore/Support/CheckedArithmetic.h"

#include "TokwatchCore/Support/SystemLog.h"

namespace tokwatch {

thread_local constinit const SumOrigin* SumOrigin::innermost = nullptr;

std::string SumOrigin::described() {
    std::string all;
    for (const SumOrigin* origin = innermost; origin != nullptr; origin = origin->outer)
        all += (all.empty() ? "" : "; ") + origin->text(origin->object);
    return all.empty() ? all : " (" + all + ")";
}

std::int64_t checkedAdd(std::int64_t a, std::int64_t b) {
    std::int64_t result = 0;
    if (__builtin_add_overflow(a, b, &result))
        fatal("a sum of token counts exceeds 64 bits" + SumOrigin::described());
    return result;
}

std::int64_t checkedSubtract(std::int64_t a, std::int64_t b) {
    std::int64_t result = 0;
    if (__builtin_sub_overflow(a, b, &result))
        fatal("a difference of token counts exceeds 64 bits" + SumOrigin::described());
    return result;
}

} // namespace tokwatch

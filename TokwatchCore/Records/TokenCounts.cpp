#include "TokwatchCore/Records/TokenCounts.h"

#include "TokwatchCore/Support/CheckedArithmetic.h"

namespace tokwatch {

std::int64_t TokenCounts::cacheWrite() const {
    return checkedAdd(cacheWrite5m, cacheWrite1h);
}

std::int64_t TokenCounts::total() const {
    std::int64_t sum = checkedAdd(uncachedInput, cacheRead);
    sum = checkedAdd(sum, cacheWrite5m);
    sum = checkedAdd(sum, cacheWrite1h);
    return checkedAdd(sum, output);
}

TokenCounts& TokenCounts::operator+=(const TokenCounts& other) {
    uncachedInput = checkedAdd(uncachedInput, other.uncachedInput);
    cacheRead = checkedAdd(cacheRead, other.cacheRead);
    cacheWrite5m = checkedAdd(cacheWrite5m, other.cacheWrite5m);
    cacheWrite1h = checkedAdd(cacheWrite1h, other.cacheWrite1h);
    output = checkedAdd(output, other.output);
    reasoning = checkedAdd(reasoning, other.reasoning);
    return *this;
}

} // namespace tokwatch

#include "TokwatchCore/Records/LimitSample.h"

#include <variant>

namespace tokwatch {
namespace {

constexpr Seconds resetTolerance{60};

} // namespace

std::optional<LimitSample> sampleOf(const LimitWindow& window, Date fetchedAt) {
    if (window.source.isStale()) return std::nullopt;
    const auto* local = std::get_if<LimitSource::Local>(&window.source.value);
    return LimitSample{local != nullptr ? local->asOf : fetchedAt, window.usedFraction,
                       window.resetsAt};
}

bool haveSameReset(const LimitSample& a, const LimitSample& b) {
    if (!a.resetsAt || !b.resetsAt) return a.resetsAt == b.resetsAt;
    return std::chrono::abs(*a.resetsAt - *b.resetsAt) <= resetTolerance;
}

bool isWorthKeeping(const std::optional<LimitSample>& before, const LimitSample& sample) {
    // Another window begins with a sample of its own, however soon.
    if (!before || !haveSameReset(*before, sample)) return true;
    return before->usedFraction != sample.usedFraction &&
           sample.moment - before->moment >= sampleSpacing;
}

} // namespace tokwatch

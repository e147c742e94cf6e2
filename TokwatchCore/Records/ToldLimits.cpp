#include "TokwatchCore/Records/ToldLimits.h"

#include <algorithm>
#include <variant>

namespace tokwatch {
namespace {

bool isLive(const LimitWindow& window) {
    return std::holds_alternative<LimitSource::Live>(window.source.value);
}

} // namespace

bool isTold(const ProviderLimits& limits) {
    return limits.status == ProviderStatus::ok && !limits.windows.empty() &&
           std::ranges::none_of(limits.windows, isLive);
}

} // namespace tokwatch

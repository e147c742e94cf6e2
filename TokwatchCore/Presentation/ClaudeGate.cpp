#include "TokwatchCore/Presentation/ClaudeGate.h"

#include <utility>

namespace tokwatch {

bool ClaudeGate::isClosed(ProviderID provider, bool isOpen) {
    return provider == ProviderID::claude && !isOpen;
}

ProviderLimits ClaudeGate::shown(const std::optional<ProviderLimits>& known, Date now) {
    ProviderLimits limits;
    limits.fetchedAt = now;
    if (known) limits = known->markedStale();
    limits.status = ProviderStatus::unavailable;
    return limits;
}

LimitsByProvider ClaudeGate::applied(LimitsByProvider stored, bool isOpen, Date now) {
    for (auto& [provider, limits] : stored) {
        if (isClosed(provider, isOpen)) limits = shown(limits, now);
    }
    return stored;
}

} // namespace tokwatch

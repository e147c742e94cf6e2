#include "Tokwatch/Limits/ClaudeGate.h"

#include "Tokwatch/Preferences/Preferences.h"

#include <utility>

namespace tokwatch {

bool ClaudeGate::isClosed(ProviderID provider, const Preferences& preferences) {
    return provider == ProviderID::claude && !preferences.claudeLiveLimits;
}

ProviderLimits ClaudeGate::shown(const std::optional<ProviderLimits>& known, Date now) {
    ProviderLimits limits;
    limits.fetchedAt = now;
    if (known) limits = known->markedStale();
    limits.status = ProviderStatus::unavailable;
    return limits;
}

LimitsByProvider ClaudeGate::applied(LimitsByProvider stored, const Preferences& preferences,
                                     Date now) {
    for (auto& [provider, limits] : stored) {
        if (isClosed(provider, preferences)) limits = shown(limits, now);
    }
    return stored;
}

} // namespace tokwatch

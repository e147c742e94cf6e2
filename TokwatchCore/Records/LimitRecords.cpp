#include "LimitRecords.h"

#include <algorithm>
#include <cmath>

namespace tokwatch {

std::string_view rawValue(ProviderStatus status) {
    constexpr std::array<std::string_view, 6> names{"ok",          "signInNeeded", "unreachable",
                                                    "rateLimited", "accessDenied", "unavailable"};
    return names[static_cast<std::size_t>(status)];
}

ProviderLimits ProviderLimits::markedStale() const {
    ProviderLimits copy = *this;
    for (LimitWindow& window : copy.windows) {
        if (!window.source.isStale()) window.source = LimitSource::stale(fetchedAt);
    }
    return copy;
}

std::optional<std::string> planName(std::string_view raw) {
    if (raw.empty()) return std::nullopt;
    std::string name(raw);
    if (name[0] >= 'a' && name[0] <= 'z') name[0] = static_cast<char>(name[0] - 'a' + 'A');
    return name;
}

double clampedFraction(double percent) {
    return std::isnan(percent) ? 0.0 : std::clamp(percent / 100, 0.0, 1.0);
}

} // namespace tokwatch

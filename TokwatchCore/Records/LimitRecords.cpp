#include "TokwatchCore/Records/LimitRecords.h"

#include "TokwatchCore/Support/Letters.h"
#include "TokwatchCore/Support/PlainText.h"

#include <algorithm>
#include <cmath>

namespace tokwatch {

const LimitWindow* ProviderLimits::windowWithID(std::string_view id) const {
    const auto found = std::ranges::find(windows, id, &LimitWindow::id);
    return found == windows.end() ? nullptr : &*found;
}

const ProviderLimits* limitsOf(const LimitsByProvider& limits, ProviderID provider) {
    const auto found = limits.find(provider);
    return found == limits.end() ? nullptr : &found->second;
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
    const std::string name = boundedName(std::string(raw));
    if (validUTF8(name) != name) return name; // nothing to capitalise
    std::wstring letters = lettersOf(name);
    letters.front() = capital(letters.front());
    return utf8Of(letters);
}

std::optional<double> plausibleDuration(double seconds) {
    constexpr double most = 30 * 365.25 * 86'400;
    return std::abs(seconds) <= most ? std::optional(seconds) : std::nullopt;
}

std::optional<double> plausibleAmount(double usd) {
    return std::abs(usd) < 1e12 ? std::optional(usd) : std::nullopt;
}

double clampedFraction(double percent) {
    return std::isnan(percent) ? 0.0 : std::clamp(percent / 100, 0.0, 1.0);
}

} // namespace tokwatch

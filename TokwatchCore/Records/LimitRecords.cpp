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

ProviderLimits ProviderLimits::markedStale() const {
    ProviderLimits copy = *this;
    for (LimitWindow& window : copy.windows) {
        if (!window.source.isStale()) window.source = LimitSource::stale(fetchedAt);
    }
    return copy;
}

std::string boundedName(std::string name) {
    constexpr std::size_t most = 120;
    std::size_t characters = 0;
    std::size_t last = 0; // where the last character begins for which there is room
    for (std::size_t at = 0; at < name.size(); ++at) {
        if ((static_cast<unsigned char>(name[at]) & 0xC0U) == 0x80U) continue; // amid a character
        if (++characters == most) last = at;
        if (characters > most) return name.substr(0, last) + "…";
    }
    return name;
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

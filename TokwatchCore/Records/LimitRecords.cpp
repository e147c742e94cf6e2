#include "TokwatchCore/Records/LimitRecords.h"

#include <QString>

#include <algorithm>
#include <cmath>

namespace tokwatch {

ProviderLimits ProviderLimits::markedStale() const {
    ProviderLimits copy = *this;
    for (LimitWindow& window : copy.windows) {
        if (!window.source.isStale()) window.source = LimitSource::stale(fetchedAt);
    }
    return copy;
}

std::optional<std::string> planName(std::string_view raw) {
    if (raw.empty()) return std::nullopt;
    const QString text = QString::fromUtf8(raw.data(), std::ssize(raw));
    if (text.toStdString() != raw) return std::string(raw); // not UTF-8: nothing to capitalise
    const qsizetype first = text[0].isHighSurrogate() && text.size() > 1 ? 2 : 1;
    return (text.left(first).toUpper() + text.mid(first)).toStdString();
}

double clampedFraction(double percent) {
    return std::isnan(percent) ? 0.0 : std::clamp(percent / 100, 0.0, 1.0);
}

} // namespace tokwatch

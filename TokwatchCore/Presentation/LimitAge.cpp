#include "TokwatchCore/Presentation/LimitAge.h"

namespace tokwatch {

Date LimitAge::asOf(const LimitWindow& window, Date fetchedAt) {
    if (const auto* local = std::get_if<LimitSource::Local>(&window.source.value))
        return local->asOf;
    if (const auto* stale = std::get_if<LimitSource::Stale>(&window.source.value))
        return stale->asOf;
    return fetchedAt;
}

bool LimitAge::isOld(const LimitWindow& window, Date fetchedAt, Date now) {
    return now - asOf(window, fetchedAt) > current;
}

} // namespace tokwatch

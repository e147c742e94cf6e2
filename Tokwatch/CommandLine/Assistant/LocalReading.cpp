#include "Tokwatch/CommandLine/Assistant/LocalReading.h"

#include "TokwatchCore/Presentation/LimitAge.h"

#include <algorithm>

namespace tokwatch {
namespace {

constexpr Seconds repetition{60};
/// By so much the moments of one reset differ that are told at different times.
constexpr Seconds resetJitter{60};
/// Assistants are told whole percents of what the service knows better.
constexpr double rounding = 0.01;

bool sameNumbers(const LimitWindow& a, const LimitWindow& b) {
    return a.usedFraction == b.usedFraction && a.resetsAt == b.resetsAt;
}

/// What was told, with the reset that is known where none was.
LimitWindow replacing(const LimitWindow& known, LimitWindow told, Date now) {
    if (!told.resetsAt && known.resetsAt && *known.resetsAt > now) told.resetsAt = known.resetsAt;
    return told;
}

/// Whether less was used by then, or of a window that ended sooner: an idle session tells again and
/// again what it was told hours ago. Within a window use only grows.
bool isOvertaken(const LimitWindow& told, const LimitWindow& known, Date now) {
    if (!known.resetsAt || *known.resetsAt <= now) return false;
    if (told.resetsAt && *told.resetsAt > *known.resetsAt + resetJitter) return false;
    return told.usedFraction <= known.usedFraction - rounding ||
           (told.resetsAt && *told.resetsAt < *known.resetsAt - resetJitter);
}

/// `known` may be dated ahead, by a clock that has been set back since; then it does not count.
bool isNews(const LimitWindow& told, Date toldAt, const LimitWindow& known, Date knownAt,
            Date now) {
    if (knownAt > now) return true;
    if (toldAt <= knownAt || isOvertaken(told, known, now)) return false;
    return known.source.isStale() || !sameNumbers(replacing(known, told, now), known) ||
           toldAt - knownAt >= repetition;
}

/// Live windows are as of the record's date, which is about to be another one.
void dateLiveWindows(std::vector<LimitWindow>& windows, Date recordedAt) {
    for (LimitWindow& window : windows) {
        if (std::holds_alternative<LimitSource::Live>(window.source.value))
            window.source = LimitSource::stale(recordedAt);
    }
}

/// Where a window stands that no one knew yet: the session before the week, both before all else.
std::vector<LimitWindow>::iterator placeOf(const LimitWindow& told,
                                           std::vector<LimitWindow>& windows,
                                           std::span<const LimitWindow> order) {
    auto place = windows.begin();
    for (const LimitWindow& each : order) {
        if (each.id == told.id) break;
        const auto found = std::ranges::find(windows, each.id, &LimitWindow::id);
        if (found != windows.end()) place = std::max(place, found + 1);
    }
    return place;
}

/// What a fetch found wrong with a login that is there.
bool concernsLogin(ProviderStatus status) {
    return status == ProviderStatus::signInNeeded || status == ProviderStatus::accessDenied;
}

} // namespace

std::optional<ProviderLimits> withLocalReading(const std::optional<ProviderLimits>& stored,
                                               std::span<const LimitWindow> told, Date now) {
    ProviderLimits limits = stored.value_or(ProviderLimits());
    const Date storedAt = limits.fetchedAt;
    std::optional<Date> newest;
    for (const LimitWindow& window : told) {
        if (window.resetsAt && *window.resetsAt <= now) continue;
        const Date toldAt = LimitAge::asOf(window, now);
        const auto known = std::ranges::find(limits.windows, window.id, &LimitWindow::id);
        if (known == limits.windows.end()) {
            limits.windows.insert(placeOf(window, limits.windows, told), window);
        } else if (isNews(window, toldAt, *known, LimitAge::asOf(*known, storedAt), now)) {
            *known = replacing(*known, window, now);
        } else {
            continue;
        }
        newest = std::max(newest.value_or(toldAt), toldAt);
    }
    if (!newest) return std::nullopt;
    dateLiveWindows(limits.windows, storedAt);
    if (!concernsLogin(limits.status)) limits.status = ProviderStatus::ok;
    // Never back: who shows the stored record takes an older one for one that was overtaken.
    limits.fetchedAt = stored && storedAt <= now ? std::max(*newest, storedAt) : *newest;
    return limits;
}

} // namespace tokwatch

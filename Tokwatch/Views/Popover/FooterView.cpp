#include "Tokwatch/Views/Popover/FooterView.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/LimitTexts.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Common/Text.h"
#include "Tokwatch/Views/Common/ViewClock.h"
#include "TokwatchCore/Presentation/LimitAge.h"
#include "TokwatchCore/Support/Amounts.h"

#include <algorithm>

namespace tokwatch {
namespace {

/// Less than this is read before anybody could see it.
constexpr std::int64_t noticeableBytes = 4'000'000;

/// When the oldest of the limits that are shown held.
std::optional<Date> oldestLimit(const AppModel& model) {
    std::optional<Date> oldest;
    for (const ProviderID provider : model.preferences().enabledProviders()) {
        const ProviderLimits* known = limitsOf(model.limits(), provider);
        if (known == nullptr) continue;
        for (const LimitWindow& window : known->windows) {
            const Date asOf = LimitAge::asOf(window, known->fetchedAt);
            oldest = std::min(oldest.value_or(asOf), asOf);
        }
    }
    return oldest;
}

struct Retry {
    ProviderID provider;
    AttemptTimes times;
};

/// The provider that a refresh may ask next, while it has to wait for that.
std::optional<Retry> nextRetry(const AppModel& model, Date now) {
    std::optional<Retry> earliest;
    for (const ProviderID provider : model.present()) {
        const auto found = model.attempts().find(provider);
        if (found == model.attempts().end() || found->second.isUnderWay) continue;
        const std::optional<Date> next = found->second.nextRetry;
        if (next && *next > now && (!earliest || *next < *earliest->times.nextRetry))
            earliest = {provider, found->second};
    }
    return earliest;
}

bool isAsking(const AppModel& model) {
    return std::ranges::any_of(model.attempts(),
                               [](const auto& each) { return each.second.isUnderWay; });
}

} // namespace

FooterView::FooterView(AppModel& model, ViewClock& viewClock)
    : clock(viewClock), updater([this, &model] { return state(model, clock.now()); },
                                [this](FooterState next) { current = std::move(next); }) {
    updater.arm();
}

// What is shown may be older than a note gets: with the present moment it would be gone at once.
void FooterView::refreshAsked() {
    clock.advance();
    asked = clock.now();
}

void FooterView::say(const QString& sentence) {
    clock.advance();
    said = Saying{sentence, clock.now()};
}

FooterState FooterView::state(const AppModel& model, Date now) const {
    FooterState state;
    const std::optional<IndexingProgress>& progress = model.indexing();
    if (progress && progress->bytesTotal >= noticeableBytes) {
        state.isIndexing = true;
        state.indexing =
            QString("Reading %1: %2 of %3")
                .arg(text(displayName(progress->provider)), text(formatBytes(progress->bytesRead)),
                     text(formatBytes(progress->bytesTotal)));
        state.indexedFraction =
            static_cast<double>(progress->bytesRead) / static_cast<double>(progress->bytesTotal);
    }
    state.isRefreshing = model.isRefreshing() || isAsking(model);
    const std::optional<Saying> saying = said.value();
    if (saying && now - saying->at < noteTime) {
        state.updated = saying->sentence;
        state.countsDown = true;
        return state;
    }
    const std::optional<Date> pressed = asked.value();
    const std::optional<Retry> retry = nextRetry(model, now);
    if (pressed && retry && now - *pressed < noteTime) {
        // By its name: the cards may say another time of others.
        state.updated = text(displayName(retry->provider)) + ": " +
                        text(LimitTexts::retry(retry->times.lastAttempt, retry->times.nextRetry,
                                               now, model.calendar()));
        state.countsDown = true;
        return state;
    }
    state.updated =
        text(TimeTexts::updated(model.lastUpdated(), oldestLimit(model), now, model.calendar()));
    return state;
}

} // namespace tokwatch

#include "moc_FooterView.cpp"

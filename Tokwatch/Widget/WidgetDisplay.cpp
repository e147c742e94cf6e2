#include "Tokwatch/Widget/WidgetDisplay.h"

#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/SummaryDisplay.h"
#include "TokwatchCore/Presentation/LimitAge.h"
#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Presentation/WindowLabel.h"
#include "TokwatchCore/Support/PlainText.h"

#include <algorithm>
#include <compare>

namespace tokwatch {
namespace {

constexpr std::size_t shownDays = 30;

/// Sorts what holds its user up the most to the front.
struct Urgency {
    bool isFullSoon = false;
    double left = 0;
    friend auto operator<=>(const Urgency&, const Urgency&) = default;
};

Urgency urgencyOf(const LimitWindow& window, Date now) {
    return {window.resetsAt && *window.resetsAt <= now + WidgetDisplay::resetLookAhead,
            LimitBarModel(window, now).leftFraction};
}

/// Each provider once, with fractions that bars can show: the file may be anybody's.
std::vector<Snapshot::Provider> soundProviders(const Snapshot& snapshot) {
    std::vector<Snapshot::Provider> sound;
    for (const Snapshot::Provider& provider : snapshot.providers) {
        if (std::ranges::count(sound, provider.id, &Snapshot::Provider::id) > 0) continue;
        sound.push_back(provider);
        for (LimitWindow& window : sound.back().windows)
            window.usedFraction = std::clamp(window.usedFraction, 0.0, 1.0);
    }
    return sound;
}

std::string noticeOf(const Snapshot::Provider& provider) {
    switch (provider.status) {
    case ProviderStatus::signInNeeded:
        return "sign-in needed";
    case ProviderStatus::accessDenied:
        return "access to the login refused";
    // Numbers of an earlier answer say enough by their age.
    case ProviderStatus::unreachable:
        return provider.windows.empty() ? "not reachable" : "";
    case ProviderStatus::rateLimited:
        return provider.windows.empty() ? "asked too often" : "";
    case ProviderStatus::ok:
    case ProviderStatus::unavailable:
        break;
    }
    return "";
}

/// How many of each provider's windows there is room for: one of each, then more of each in turns.
/// None at all for a provider that is left out.
std::vector<std::optional<std::size_t>> shares(const std::vector<Snapshot::Provider>& providers,
                                               std::size_t lines) {
    std::vector<std::optional<std::size_t>> shares(providers.size());
    for (std::size_t i = 0; i < providers.size(); ++i) {
        const std::size_t first = std::min<std::size_t>(providers[i].windows.size(), 1);
        if (1 + first > lines) break;
        shares[i] = first;
        lines -= 1 + first;
    }
    for (bool isGiven = true; isGiven;) {
        isGiven = false;
        for (std::size_t i = 0; i < providers.size(); ++i) {
            if (lines == 0 || !shares[i] || *shares[i] == providers[i].windows.size()) continue;
            ++*shares[i];
            --lines;
            isGiven = true;
        }
    }
    return shares;
}

/// The most urgent ones, in the provider's own order.
std::vector<const LimitWindow*> mostUrgent(const std::vector<LimitWindow>& windows,
                                           std::size_t count, Date now) {
    std::vector<const LimitWindow*> chosen;
    for (const LimitWindow& window : windows)
        chosen.push_back(&window);
    std::ranges::stable_sort(chosen, {},
                             [now](const LimitWindow* window) { return urgencyOf(*window, now); });
    chosen.resize(count);
    std::ranges::sort(chosen);
    return chosen;
}

/// Puts a snapshot's limits into words.
struct Teller {
    const Snapshot& snapshot;
    const Thresholds& thresholds;
    Date now;
    const Calendar& calendar;
    std::optional<Date> oldest{}; ///< of the old numbers that were told

    WidgetDisplay::Bar bar(const LimitWindow& window) {
        const LimitBarModel model(window, now);
        WidgetDisplay::Bar bar;
        bar.label = windowLabel(window);
        bar.leftText = model.percentLeftText;
        bar.resetText = model.resetText.value_or("");
        bar.leftFraction = model.leftFraction;
        bar.timeLeftFraction = model.timeLeftFraction;
        bar.severity = severityOf(model.leftFraction, thresholds.warning, thresholds.critical);
        bar.isOld = LimitAge::isOld(window, snapshot.generatedAt, now);
        if (bar.isOld) {
            const Date asOf = LimitAge::asOf(window, snapshot.generatedAt);
            oldest = std::min(oldest.value_or(asOf), asOf);
        }
        return bar;
    }

    WidgetDisplay::Provider provider(const Snapshot::Provider& provider) const {
        return {provider.id, plainText(provider.plan.value_or("")), noticeOf(provider), {}};
    }

    WidgetDisplay::Costs costs() const {
        WidgetDisplay::Costs costs;
        const Date day = snapshot.generatedAt;
        const bool isToday = calendar.dayKey(day) == calendar.dayKey(now);
        costs.todayLabel = isToday ? "Today" : DayFormat::day(day, calendar);
        costs.today = SummaryDisplay::compactCost(snapshot.costTodayUSD);
        costs.month = SummaryDisplay::compactCost(snapshot.cost30dUSD);
        costs.days.assign(shownDays, 0);
        const std::size_t known = std::min(snapshot.dailyCost30.size(), shownDays);
        std::transform(snapshot.dailyCost30.end() - static_cast<std::ptrdiff_t>(known),
                       snapshot.dailyCost30.end(),
                       costs.days.end() - static_cast<std::ptrdiff_t>(known),
                       [](double cost) { return std::max(cost, 0.0); });
        const double most = std::ranges::max(costs.days);
        if (most > 0)
            for (double& amount : costs.days)
                amount /= most;
        costs.firstDay =
            DayFormat::day(calendar.addingDays(day, 1 - static_cast<int>(shownDays)), calendar);
        return costs;
    }

    /// "Updated 3 h ago" of an old snapshot, "As of 9:41" of old numbers in a new one.
    std::string ageNote(bool isSnapshotOld) const {
        if (isSnapshotOld) return TimeTexts::updated(snapshot.generatedAt, {}, now, calendar);
        return oldest ? "As of " + DayFormat::moment(*oldest, now, calendar) : "";
    }
};

/// The tightest limit alone.
void tellTightest(WidgetDisplay& display, const std::vector<Snapshot::Provider>& providers,
                  Teller& teller) {
    const Snapshot::Provider* owner = nullptr;
    const LimitWindow* lead = nullptr;
    const LimitWindow* passedOver = nullptr; ///< the tightest of those that are full again soon
    const auto isTighter = [&teller](const LimitWindow& window, const LimitWindow* than) {
        return than == nullptr || urgencyOf(window, teller.now) < urgencyOf(*than, teller.now);
    };
    for (const Snapshot::Provider& provider : providers) {
        for (const LimitWindow& window : provider.windows) {
            if (isTighter(window, lead)) {
                owner = &provider;
                lead = &window;
            }
            if (urgencyOf(window, teller.now).isFullSoon && isTighter(window, passedOver))
                passedOver = &window;
        }
    }
    if (lead == nullptr) return;
    display.providers.push_back(teller.provider(*owner));
    display.providers.back().bars.push_back(teller.bar(*lead));
    const WidgetDisplay::Bar& shown = display.providers.back().bars.back();
    if (shown.resetText == "now")
        display.reset = "Has reset";
    else if (!shown.resetText.empty())
        display.reset = "Resets in " + shown.resetText;
    display.note = teller.ageNote(display.isOld);
    if (!display.note.empty() || passedOver == nullptr || passedOver == lead) return;
    const LimitBarModel model(*passedOver, teller.now);
    if (model.leftFraction < shown.leftFraction)
        display.note = windowLabel(*passedOver) + ' ' + model.percentLeftText + " · full in " +
                       model.resetText.value_or("");
}

void tellProviders(WidgetDisplay& display, const std::vector<Snapshot::Provider>& providers,
                   std::size_t lines, Teller& teller) {
    const auto rooms = shares(providers, lines);
    for (std::size_t i = 0; i < providers.size(); ++i) {
        if (!rooms[i]) continue;
        display.providers.push_back(teller.provider(providers[i]));
        for (const LimitWindow* window : mostUrgent(providers[i].windows, *rooms[i], teller.now))
            display.providers.back().bars.push_back(teller.bar(*window));
    }
    display.note = teller.ageNote(display.isOld);
}

} // namespace

WidgetDisplay WidgetDisplay::of(const std::optional<Snapshot>& snapshot, WidgetSize size,
                                const Thresholds& thresholds, Date now, const Calendar& calendar) {
    WidgetDisplay display;
    display.size = size;
    if (!snapshot) return display;
    display.isKnown = true;
    display.isOld = now - snapshot->generatedAt > LimitAge::current;
    std::vector<Snapshot::Provider> providers = soundProviders(*snapshot);
    std::erase_if(providers, [](const Snapshot::Provider& provider) {
        return provider.windows.empty() && noticeOf(provider).empty();
    });
    Teller teller{*snapshot, thresholds, now, calendar};
    if (size == WidgetSize::small) {
        tellTightest(display, providers, teller);
    } else {
        const std::size_t lines = size == WidgetSize::medium ? mediumLines : largeLines;
        tellProviders(display, providers, lines, teller);
        if (!display.note.empty()) {
            display.providers.clear();
            tellProviders(display, providers, lines - 1, teller);
        }
    }
    if (size == WidgetSize::large || display.providers.empty()) display.costs = teller.costs();
    if (display.providers.empty()) display.note = teller.ageNote(display.isOld);
    return display;
}

std::string WidgetDisplay::spoken() const {
    if (!isKnown) return std::string(emptyTitle) + ". " + std::string(emptyHint);
    std::string text;
    for (const Provider& provider : providers) {
        text.append(displayName(provider.id)).append(". ");
        if (!provider.notice.empty()) text += provider.notice + ". ";
        for (const Bar& bar : provider.bars)
            text += bar.label + ' ' + bar.leftText + " left" +
                    (bar.resetText.empty()    ? ""
                     : bar.resetText == "now" ? ", has reset"
                                              : ", resets in " + bar.resetText) +
                    ". ";
    }
    if (costs)
        text += costs->todayLabel + ' ' + costs->today + ". Last 30 days " + costs->month + ". ";
    if (!note.empty()) text += note + ". ";
    text.pop_back();
    return text;
}

} // namespace tokwatch

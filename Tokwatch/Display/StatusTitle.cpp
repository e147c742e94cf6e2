#include "Tokwatch/Display/StatusTitle.h"

#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Presentation/LimitAge.h"
#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Presentation/WindowLabel.h"

#include <algorithm>
#include <utility>

namespace tokwatch {
namespace {

constexpr std::string_view applicationName = "Tokwatch";

const LimitWindow* windowWithID(const ProviderLimits& limits, const std::string& id) {
    const auto found = std::ranges::find(limits.windows, id, &LimitWindow::id);
    return found == limits.windows.end() ? nullptr : &*found;
}

const ProviderLimits* limitsOf(const LimitsByProvider& limits, ProviderID provider) {
    const auto found = limits.find(provider);
    return found == limits.end() ? nullptr : &found->second;
}

const LimitWindow* menuBarWindow(const Preferences& preferences, const LimitsByProvider& limits,
                                 ProviderID provider, Date now) {
    const ProviderLimits* known = limitsOf(limits, provider);
    return known ? tokwatch::menuBarWindow(preferences, provider, *known, now) : nullptr;
}

/// "Claude · Session 42% left · resets in 3h 5m"
std::string tooltipLine(ProviderID provider, const LimitWindow& window, Date now) {
    const LimitBarModel bar(window, now);
    std::string line(displayName(provider));
    line += " · " + windowLabel(window) + ' ' + bar.percentLeftText + " left";
    if (bar.resetText && *bar.resetText != "now") line += " · resets in " + *bar.resetText;
    return line;
}

std::string tooltip(const std::vector<ProviderID>& enabled, const LimitsByProvider& limits,
                    Date now) {
    std::string lines;
    for (const ProviderID provider : enabled) {
        const ProviderLimits* known = limitsOf(limits, provider);
        const LimitWindow* window = known ? tightestWindow(*known, now) : nullptr;
        if (!window) continue;
        if (!lines.empty()) lines += '\n';
        lines += tooltipLine(provider, *window, now);
    }
    return lines.empty() ? std::string(applicationName) : lines;
}

/// By the least that any enabled provider's menu-bar window has left, whichever is shown.
Severity severity(const Preferences& preferences, const std::vector<ProviderID>& enabled,
                  const LimitsByProvider& limits, Date now) {
    if (!preferences.tintEnabled) return Severity::normal;
    std::optional<double> least;
    for (const ProviderID provider : enabled) {
        const LimitWindow* window = menuBarWindow(preferences, limits, provider, now);
        if (!window) continue;
        const double left = LimitBarModel(*window, now).leftFraction;
        least = std::min(least.value_or(left), left);
    }
    return least ? severityOf(*least, preferences.warningThreshold, preferences.criticalThreshold)
                 : Severity::normal;
}

void showWindow(StatusTitle& title, const Preferences& preferences, const ProviderLimits& limits,
                const LimitWindow& window, Date now) {
    const LimitBarModel bar(window, now);
    title.text = bar.percentLeftText;
    title.percentLeft = static_cast<int>(wholePercent(bar.leftFraction));
    if (preferences.showResetTime && bar.resetText) *title.text += " · " + *bar.resetText;
    title.isOld = LimitAge::isOld(window, limits.fetchedAt, now);
}

/// Whose limit the title shows: the pinned provider's, or while that is turned off the first one's.
ProviderID shownProvider(const Preferences& preferences, const std::vector<ProviderID>& enabled) {
    const ProviderID pinned = preferences.pinnedProvider;
    return std::ranges::count(enabled, pinned) > 0 ? pinned : enabled.front();
}

/// The title without its text.
StatusTitle icon(const Preferences& preferences, const std::vector<ProviderID>& enabled,
                 const LimitsByProvider& limits, Date now) {
    return {std::nullopt, std::nullopt, severity(preferences, enabled, limits, now),
            tooltip(enabled, limits, now), false};
}

} // namespace

const LimitWindow* tightestWindow(const ProviderLimits& limits, Date now) {
    const auto runs = [now](const LimitWindow& window) {
        return !window.resetsAt || *window.resetsAt > now;
    };
    const bool anyRuns = std::ranges::any_of(limits.windows, runs);
    const LimitWindow* tightest = nullptr;
    double least = 0;
    for (const LimitWindow& window : limits.windows) {
        if (anyRuns && !runs(window)) continue;
        const double left = LimitBarModel(window, now).leftFraction;
        if (tightest && left >= least) continue;
        tightest = &window;
        least = left;
    }
    return tightest;
}

const LimitWindow* menuBarWindow(const Preferences& preferences, ProviderID provider,
                                 const ProviderLimits& limits, Date now) {
    const WindowChoices& choices = preferences.menuBarWindows;
    const auto choice = choices.find(std::string(rawValue(provider)));
    const LimitWindow* chosen =
        choice == choices.end() ? nullptr : windowWithID(limits, choice->second);
    return chosen ? chosen : tightestWindow(limits, now);
}

StatusTitle statusTitle(const Preferences& preferences, const LimitsByProvider& limits, Date now) {
    const std::vector<ProviderID> enabled = preferences.enabledProviders();
    StatusTitle title = icon(preferences, enabled, limits, now);
    if (enabled.empty() || preferences.menuBarStyle == MenuBarStyle::icon) return title;
    title.provider = shownProvider(preferences, enabled);
    if (const auto* window = menuBarWindow(preferences, limits, *title.provider, now))
        showWindow(title, preferences, limits.at(*title.provider), *window, now);
    return title;
}

StatusContent statusContent(const Preferences& preferences, const LimitsByProvider& limits,
                            Date now) {
    const std::vector<ProviderID> enabled = preferences.enabledProviders();
    StatusContent content{statusTitle(preferences, limits, now), {}};
    for (const ProviderID provider : enabled) {
        const ProviderLimits* known = limitsOf(limits, provider);
        if (!known) continue;
        const LimitWindow* usual = provider == shownProvider(preferences, enabled)
                                       ? menuBarWindow(preferences, provider, *known, now)
                                       : nullptr;
        for (const LimitWindow& window : known->windows) {
            StatusTitle title = icon(preferences, enabled, limits, now);
            title.provider = provider;
            title.tooltip = tooltipLine(provider, window, now);
            showWindow(title, preferences, *known, window, now);
            title.text = windowLabel(window) + ' ' + *title.text;
            content.steps.push_back({provider, window.id, &window == usual, std::move(title)});
        }
    }
    return content;
}

} // namespace tokwatch

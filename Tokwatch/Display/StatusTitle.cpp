#include "Tokwatch/Display/StatusTitle.h"

#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Presentation/LimitAge.h"
#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Presentation/MeterFormat.h"
#include "TokwatchCore/Presentation/WindowLabel.h"
#include "TokwatchCore/Support/ApplicationVersion.h"

#include <algorithm>
#include <utility>

namespace tokwatch {
namespace {

const ProviderLimits* limitsOf(const LimitsByProvider& limits, ProviderID provider) {
    const auto found = limits.find(provider);
    return found == limits.end() ? nullptr : &found->second;
}

const LimitWindow* menuBarWindow(const Preferences& preferences, const LimitsByProvider& limits,
                                 ProviderID provider, Date now) {
    const ProviderLimits* known = limitsOf(limits, provider);
    return known ? tokwatch::menuBarWindow(preferences, provider, *known, now) : nullptr;
}

/// "Claude · Session 42% left · resets in 3h 5m · runs out about 14:00", and how old the number is
/// once it is.
std::string tooltipLine(ProviderID provider, const LimitWindow& window, Date fetchedAt, Date now,
                        const RunOuts& runOuts) {
    const LimitBarModel bar(window, now);
    std::string line(displayName(provider));
    line += " · " + windowLabel(window) + ' ' + bar.percentLeftText + " left";
    if (bar.resetText && *bar.resetText != "now") line += " · resets in " + *bar.resetText;
    if (const std::string text = runOuts.text(provider, window.id); !text.empty())
        line += " · " + text;
    if (LimitAge::isOld(window, fetchedAt, now))
        line += " · " +
                MeterFormat::duration(Seconds(now - LimitAge::asOf(window, fetchedAt)).count()) +
                " old";
    return line;
}

std::string tooltip(const std::vector<ProviderID>& enabled, const LimitsByProvider& limits,
                    Date now, const RunOuts& runOuts) {
    std::string lines;
    for (const ProviderID provider : enabled) {
        const ProviderLimits* known = limitsOf(limits, provider);
        const LimitWindow* window = known ? tightestWindow(*known, now) : nullptr;
        if (!window) continue;
        if (!lines.empty()) lines += '\n';
        lines += tooltipLine(provider, *window, known->fetchedAt, now, runOuts);
    }
    return lines.empty() ? std::string(applicationName) : lines;
}

Severity severity(const Preferences& preferences, const LimitWindow& window, Date now) {
    if (!preferences.tintEnabled) return Severity::normal;
    return severityOf(LimitBarModel(window, now).leftFraction, preferences.warningThreshold,
                      preferences.criticalThreshold);
}

/// By the least that any enabled provider's menu-bar window has left, whichever is shown.
Severity severity(const Preferences& preferences, const std::vector<ProviderID>& enabled,
                  const LimitsByProvider& limits, Date now) {
    Severity gravest = Severity::normal;
    for (const ProviderID provider : enabled)
        if (const auto* window = menuBarWindow(preferences, limits, provider, now))
            gravest = std::max(gravest, severity(preferences, *window, now));
    return gravest;
}

/// Of the title's provider.
void showWindow(StatusTitle& title, const Preferences& preferences, const ProviderLimits& limits,
                const LimitWindow& window, Date now, const RunOuts& runOuts) {
    const LimitBarModel bar(window, now);
    title.text = bar.percentLeftText;
    title.percentLeft = static_cast<int>(wholePercent(bar.leftFraction));
    if (preferences.showResetTime && bar.resetText) *title.text += " · " + *bar.resetText;
    title.isOld = LimitAge::isOld(window, limits.fetchedAt, now);
    title.runsOutAt = runOuts.moment(*title.provider, window.id);
}

/// The title without its text.
StatusTitle icon(const Preferences& preferences, const std::vector<ProviderID>& enabled,
                 const LimitsByProvider& limits, Date now, const RunOuts& runOuts) {
    return {std::nullopt, std::nullopt, severity(preferences, enabled, limits, now),
            tooltip(enabled, limits, now, runOuts), false};
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
        choice == choices.end() ? nullptr : limits.windowWithID(choice->second);
    return chosen ? chosen : tightestWindow(limits, now);
}

std::optional<ProviderID> shownProvider(const Preferences& preferences,
                                        const LimitsByProvider& limits) {
    const std::vector<ProviderID> enabled = preferences.enabledProviders();
    if (enabled.empty()) return std::nullopt;
    const ProviderID pinned = preferences.pinnedProvider;
    const ProviderID usual = std::ranges::count(enabled, pinned) > 0 ? pinned : enabled.front();
    const auto hasLimit = [&limits](ProviderID provider) {
        const ProviderLimits* known = limitsOf(limits, provider);
        return known && !known->windows.empty();
    };
    if (preferences.pinnedProvider.isChosen() || hasLimit(usual)) return usual;
    const auto standIn = std::ranges::find_if(enabled, hasLimit);
    return standIn == enabled.end() ? usual : *standIn;
}

StatusTitle statusTitle(const Preferences& preferences, const LimitsByProvider& limits, Date now,
                        const RunOuts& runOuts) {
    const std::vector<ProviderID> enabled = preferences.enabledProviders();
    StatusTitle title = icon(preferences, enabled, limits, now, runOuts);
    if (preferences.menuBarStyle == MenuBarStyle::icon) return title;
    title.provider = shownProvider(preferences, limits);
    if (!title.provider) return title;
    if (const auto* window = menuBarWindow(preferences, limits, *title.provider, now))
        showWindow(title, preferences, limits.at(*title.provider), *window, now, runOuts);
    return title;
}

StatusContent statusContent(const Preferences& preferences, const LimitsByProvider& limits,
                            Date now, const RunOuts& runOuts) {
    const std::vector<ProviderID> enabled = preferences.enabledProviders();
    const std::optional<ProviderID> shown = shownProvider(preferences, limits);
    StatusContent content{statusTitle(preferences, limits, now, runOuts), {}};
    for (const ProviderID provider : enabled) {
        const ProviderLimits* known = limitsOf(limits, provider);
        if (!known) continue;
        const LimitWindow* usual =
            provider == shown ? menuBarWindow(preferences, provider, *known, now) : nullptr;
        for (const LimitWindow& window : known->windows) {
            StatusTitle title{{},
                              provider,
                              severity(preferences, window, now),
                              tooltipLine(provider, window, known->fetchedAt, now, runOuts)};
            showWindow(title, preferences, *known, window, now, runOuts);
            title.text = windowLabel(window) + ' ' + *title.text;
            content.steps.push_back({provider, window.id, &window == usual, std::move(title)});
        }
    }
    return content;
}

} // namespace tokwatch

#include "Tokwatch/Display/StatusTitle.h"

#include "TokwatchCore/Presentation/LimitAge.h"
#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Presentation/MeterFormat.h"
#include "TokwatchCore/Presentation/WindowLabel.h"
#include "TokwatchCore/Support/ApplicationVersion.h"

#include <algorithm>
#include <utility>

namespace tokwatch {
namespace {

const LimitWindow* menuBarWindow(const PlainSettings& settings, const LimitsByProvider& limits,
                                 ProviderID provider, Date now) {
    const ProviderLimits* known = limitsOf(limits, provider);
    return known ? tokwatch::menuBarWindow(settings, provider, *known, now) : nullptr;
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

Severity severity(const PlainSettings& settings, const LimitWindow& window, Date now) {
    if (!settings.tintEnabled) return Severity::normal;
    return severityOf(LimitBarModel(window, now).leftFraction, settings.thresholds.warning,
                      settings.thresholds.critical);
}

/// By the least that any enabled provider's menu-bar window has left, whichever is shown.
Severity severity(const PlainSettings& settings, const std::vector<ProviderID>& enabled,
                  const LimitsByProvider& limits, Date now) {
    Severity gravest = Severity::normal;
    for (const ProviderID provider : enabled)
        if (const auto* window = menuBarWindow(settings, limits, provider, now))
            gravest = std::max(gravest, severity(settings, *window, now));
    return gravest;
}

/// Of the title's provider.
void showWindow(StatusTitle& title, const PlainSettings& settings, const ProviderLimits& limits,
                const LimitWindow& window, Date now, const RunOuts& runOuts) {
    const LimitBarModel bar(window, now);
    title.text = bar.percentLeftText;
    title.percentLeft = static_cast<int>(wholePercent(bar.leftFraction));
    if (settings.showResetTime && bar.resetText) *title.text += " · " + *bar.resetText;
    title.isOld = LimitAge::isOld(window, limits.fetchedAt, now);
    title.runsOutAt = runOuts.moment(*title.provider, window.id);
}

/// The title without its text.
StatusTitle icon(const PlainSettings& settings, const std::vector<ProviderID>& enabled,
                 const LimitsByProvider& limits, Date now, const RunOuts& runOuts) {
    return {std::nullopt, std::nullopt, severity(settings, enabled, limits, now),
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

const LimitWindow* menuBarWindow(const PlainSettings& settings, ProviderID provider,
                                 const ProviderLimits& limits, Date now) {
    const WindowChoices& choices = settings.menuBarWindows;
    const auto choice = choices.find(std::string(rawValue(provider)));
    const LimitWindow* chosen =
        choice == choices.end() ? nullptr : limits.windowWithID(choice->second);
    return chosen ? chosen : tightestWindow(limits, now);
}

std::optional<ProviderID> shownProvider(const PlainSettings& settings,
                                        const LimitsByProvider& limits) {
    const std::vector<ProviderID>& enabled = settings.enabledProviders;
    if (enabled.empty()) return std::nullopt;
    const ProviderID pinned = settings.pinnedProvider;
    const ProviderID usual = std::ranges::count(enabled, pinned) > 0 ? pinned : enabled.front();
    const auto hasLimit = [&limits](ProviderID provider) {
        const ProviderLimits* known = limitsOf(limits, provider);
        return known && !known->windows.empty();
    };
    if (settings.isPinChosen || hasLimit(usual)) return usual;
    const auto standIn = std::ranges::find_if(enabled, hasLimit);
    return standIn == enabled.end() ? usual : *standIn;
}

StatusTitle statusTitle(const PlainSettings& settings, const LimitsByProvider& limits, Date now,
                        const RunOuts& runOuts) {
    const std::vector<ProviderID>& enabled = settings.enabledProviders;
    StatusTitle title = icon(settings, enabled, limits, now, runOuts);
    if (settings.menuBarStyle == MenuBarStyle::icon) return title;
    title.provider = shownProvider(settings, limits);
    if (!title.provider) return title;
    if (const auto* window = menuBarWindow(settings, limits, *title.provider, now))
        showWindow(title, settings, limits.at(*title.provider), *window, now, runOuts);
    return title;
}

StatusContent statusContent(const PlainSettings& settings, const LimitsByProvider& limits, Date now,
                            const RunOuts& runOuts) {
    const std::vector<ProviderID>& enabled = settings.enabledProviders;
    const std::optional<ProviderID> shown = shownProvider(settings, limits);
    StatusContent content{statusTitle(settings, limits, now, runOuts), {}};
    for (const ProviderID provider : enabled) {
        const ProviderLimits* known = limitsOf(limits, provider);
        if (!known) continue;
        const LimitWindow* usual =
            provider == shown ? menuBarWindow(settings, provider, *known, now) : nullptr;
        for (const LimitWindow& window : known->windows) {
            StatusTitle title{{},
                              provider,
                              severity(settings, window, now),
                              tooltipLine(provider, window, known->fetchedAt, now, runOuts)};
            showWindow(title, settings, *known, window, now, runOuts);
            title.text = windowLabel(window) + ' ' + *title.text;
            content.steps.push_back({provider, window.id, &window == usual, std::move(title)});
        }
    }
    return content;
}

} // namespace tokwatch

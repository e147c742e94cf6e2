#include "Tokwatch/Views/Settings/MenuBarView.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Common/Text.h"
#include "Tokwatch/Views/Common/ViewClock.h"
#include "TokwatchCore/Presentation/WindowLabel.h"

#include <algorithm>
#include <cmath>

namespace tokwatch {
namespace {

/// Sliders move and answer in whole percents.
double wholePercent(double fraction) {
    return std::round(fraction * 100) / 100;
}

QString percentText(double fraction) {
    return QString("%1%").arg(std::lround(fraction * 100));
}

const std::vector<LimitWindow>& windowsOf(const LimitsByProvider& limits, ProviderID provider) {
    static const std::vector<LimitWindow> none;
    const auto found = limits.find(provider);
    return found == limits.end() ? none : found->second.windows;
}

/// The providers whose number the item can show: those that can have one, and the one that is
/// chosen, which is to be seen.
std::vector<ProviderID> offered(const Preferences& preferences, const LimitsByProvider& limits) {
    std::vector<ProviderID> providers = preferences.enabledProviders();
    const ProviderID pinned = preferences.pinnedProvider;
    std::erase_if(providers, [&](ProviderID provider) {
        return provider != pinned && !traits(provider).publishesLimits &&
               windowsOf(limits, provider).empty();
    });
    return providers;
}

} // namespace

MenuBarView::MenuBarView(AppModel& appModel, const ViewClock& clock)
    : model(appModel), stateUpdater([this, &clock] { return computed(clock); },
                                    [this](MenuBarState next) { current = std::move(next); }),
      windowsUpdater([this] { return windowRows(); },
                     [this](const std::vector<WindowRow>& rows) { windowModel.assign(rows); }) {
    stateUpdater.arm();
    windowsUpdater.arm();
}

QString MenuBarView::previewNote() const {
    if (current->preview.isSample) return "A sample, until your limits are known.";
    if (current->preview.percent < 0) return "Without a number, the sign stands alone.";
    return "Panels that give each item a square show the number alone.";
}

double MenuBarView::lowestWarning() const {
    return Preferences::lowestWarning;
}

double MenuBarView::highestWarning() const {
    constexpr double stillUseful = 0.9;
    return stillUseful;
}

double MenuBarView::lowestCritical() const {
    return Preferences::lowestCritical;
}

double MenuBarView::step() const {
    return 0.01;
}

MenuBarState MenuBarView::computed(const ViewClock& clock) const {
    const Preferences& preferences = model.preferences();
    const std::vector<ProviderID> enabled = offered(preferences, model.limits());
    MenuBarState state;
    state.style = static_cast<int>(preferences.menuBarStyle.value());
    state.showsProvider = preferences.menuBarStyle == MenuBarStyle::provider && !enabled.empty();
    for (const ProviderID provider : enabled)
        state.providers.append(text(displayName(provider)));
    // A pinned provider that is turned off gives way to the first one, as in the item.
    const auto pinned = std::ranges::find(enabled, preferences.pinnedProvider.value());
    if (!enabled.empty())
        state.provider = pinned == enabled.end() ? 0 : static_cast<int>(pinned - enabled.begin());
    state.showResetTime = preferences.showResetTime;
    state.tint = preferences.tintEnabled;
    state.warning = preferences.warningThreshold;
    state.critical = preferences.criticalThreshold;
    state.highestCritical = Preferences::highestCritical(state.warning);
    state.warningText = percentText(state.warning);
    state.criticalText = percentText(state.critical);
    state.preview = titlePreview(preferences, model.limits(), clock.now());
    return state;
}

std::vector<WindowRow> MenuBarView::windowRows() const {
    const WindowChoices& chosen = model.preferences().menuBarWindows;
    std::vector<WindowRow> rows;
    for (const ProviderID provider : model.preferences().enabledProviders()) {
        const std::vector<LimitWindow>& windows = windowsOf(model.limits(), provider);
        if (windows.empty() && !traits(provider).publishesLimits) continue;
        WindowRow row{text(rawValue(provider)), text(displayName(provider)), {"Lowest left"}, 0};
        const auto choice = chosen.find(std::string(rawValue(provider)));
        for (const LimitWindow& window : windows) {
            if (choice != chosen.end() && choice->second == window.id)
                row.current = static_cast<int>(row.labels.size());
            row.labels.append(text(windowLabel(window)));
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

void MenuBarView::setStyle(int style) {
    model.preferences().menuBarStyle = style == 0 ? MenuBarStyle::icon : MenuBarStyle::provider;
}

void MenuBarView::setProvider(int index) {
    const std::vector<ProviderID> enabled = offered(model.preferences(), model.limits());
    if (index < 0 || index >= static_cast<int>(enabled.size())) return;
    model.preferences().pinnedProvider = enabled[static_cast<std::size_t>(index)];
}

void MenuBarView::setWindow(const QString& provider, int index) {
    const std::optional<ProviderID> id = providerFromRawValue(provider.toStdString());
    if (!id) return;
    const std::vector<LimitWindow>& windows = windowsOf(model.limits(), *id);
    WindowChoices choices = model.preferences().menuBarWindows.peek();
    if (index <= 0)
        choices.erase(provider.toStdString());
    else if (index <= static_cast<int>(windows.size()))
        choices[provider.toStdString()] = windows[static_cast<std::size_t>(index) - 1].id;
    model.preferences().menuBarWindows = std::move(choices);
}

void MenuBarView::setShowResetTime(bool shows) {
    model.preferences().showResetTime = shows;
}

void MenuBarView::setTint(bool tints) {
    model.preferences().tintEnabled = tints;
}

void MenuBarView::setWarning(double left) {
    model.preferences().warningThreshold = wholePercent(left);
}

void MenuBarView::setCritical(double left) {
    model.preferences().criticalThreshold = wholePercent(left);
}

} // namespace tokwatch

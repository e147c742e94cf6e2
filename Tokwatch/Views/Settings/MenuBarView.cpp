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
    const ProviderLimits* known = limitsOf(limits, provider);
    return known == nullptr ? none : known->windows;
}

QVariant choice(std::string_view id, std::string_view label) {
    return QVariant::fromValue(NamedChoice{text(id), text(label)});
}

/// The providers whose number the item can show: those that can have one, and the one that it
/// shows.
std::vector<ProviderID> offered(const Preferences& preferences, const LimitsByProvider& limits,
                                std::optional<ProviderID> shown) {
    std::vector<ProviderID> providers = preferences.enabledProviders();
    std::erase_if(providers, [&](ProviderID provider) {
        return provider != shown && !traits(provider).publishesLimits &&
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

double MenuBarView::lowestWarning() const {
    return Thresholds::lowestWarning;
}

double MenuBarView::highestWarning() const {
    constexpr double stillUseful = 0.9;
    return stillUseful;
}

double MenuBarView::lowestCritical() const {
    return Thresholds::lowestCritical;
}

double MenuBarView::step() const {
    return 0.01;
}

MenuBarState MenuBarView::computed(const ViewClock& clock) const {
    const Preferences& preferences = model.preferences();
    const std::optional<ProviderID> shown = shownProvider(preferences.plain(), model.limits());
    MenuBarState state;
    state.style = static_cast<Segment::Style>(preferences.menuBarStyle.value());
    state.showsProvider = preferences.menuBarStyle == MenuBarStyle::provider && shown;
    for (const ProviderID provider : offered(preferences, model.limits(), shown))
        state.providers.append(choice(rawValue(provider), displayName(provider)));
    if (shown) state.provider = text(rawValue(*shown));
    const ProviderID usual = preferences.pinnedProvider;
    if (shown && shown != usual && !preferences.pinnedProvider.isChosen())
        state.standIn = QString("%1 stands in until you choose: %2 has no number.")
                            .arg(text(displayName(*shown)), text(displayName(usual)));
    state.showResetTime = preferences.showResetTime;
    state.tint = preferences.tintEnabled;
    state.warning = preferences.warningThreshold;
    state.critical = preferences.criticalThreshold;
    state.highestCritical = Thresholds::highestCritical(state.warning);
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
        WindowRow row{text(rawValue(provider)), text(displayName(provider)), {}, {}};
        const auto named = chosen.find(std::string(rawValue(provider)));
        for (const LimitWindow& window : windows) {
            if (named != chosen.end() && named->second == window.id) row.current = text(window.id);
            row.windows.append(choice(window.id, windowLabel(window)));
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

void MenuBarView::setStyle(Segment::Style style) {
    model.preferences().menuBarStyle = static_cast<MenuBarStyle>(style);
}

void MenuBarView::setProvider(const QString& provider) {
    if (const auto id = providerFromRawValue(provider.toStdString()))
        model.preferences().pinnedProvider = *id;
}

void MenuBarView::setWindow(const QString& provider, const QString& window) {
    WindowChoices choices = model.preferences().menuBarWindows.peek();
    if (window.isEmpty())
        choices.erase(provider.toStdString());
    else
        choices[provider.toStdString()] = window.toStdString();
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

#include "moc_MenuBarView.cpp"

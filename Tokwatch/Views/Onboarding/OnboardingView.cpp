#include "Tokwatch/Views/Onboarding/OnboardingView.h"

#include "KivoLaunch/LoginItem.h"
#include "Tokwatch/Display/HomeRelative.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Ingestion/ProviderLocations.h"
#include "TokwatchCore/Limits/UsageServers.h"

#include <algorithm>

namespace tokwatch {
namespace {

OnboardingStep step(ProviderID provider, const ProviderLocations& locations) {
    OnboardingStep step{text(rawValue(provider)), text(displayName(provider)), {}, {}, {}};
    if (const auto roots = locations.logRoots(provider); !roots.empty())
        step.reads = "reads " + text(homeRelative(roots.front().native(), locations.home.native()));
    if (traits(provider).logFormat == LogFormat::none) {
        step.reads = "is only detected, shows no usage yet";
    } else if (provider == ProviderID::claude) {
        step.asks = QString("Asks %1 what is left, with Claude Code's login").arg(claudeServer);
        step.switchText = "Live limits";
    } else if (provider == ProviderID::codex) {
        step.asks =
            QString("Asks %1 with Codex's login if the logs tell no limits").arg(codexServer);
        step.switchText = "Show limits";
    } else {
        step.reads += ", asks nobody";
    }
    static_assert(std::ranges::count(providerTable, true, &ProviderTraits::publishesLimits) == 2,
                  "the welcome says of each with limits whom it asks");
    return step;
}

QVariantList stepsOf(const ProviderLocations& locations) {
    QVariantList steps;
    for (const ProviderID provider : allCases<ProviderID>)
        if (locations.isPresent(provider))
            steps.append(QVariant::fromValue(step(provider, locations)));
    return steps;
}

} // namespace

OnboardingView::OnboardingView(Preferences& userPreferences, const ProviderLocations& locations,
                               kivo::LoginItem& login)
    : preferences(userPreferences), loginItem(login), steps(stepsOf(locations)),
      places(searchedPlaces(locations)),
      liveLimitsNotifier(preferences.claudeLiveLimits.addNotifier([this] { emit askedChanged(); })),
      disabledNotifier(preferences.disabledProviders.addNotifier([this] { emit askedChanged(); })) {
}

QVariantMap OnboardingView::asked() const {
    QVariantMap asked;
    for (const ProviderID provider : allCases<ProviderID>)
        asked.insert(text(rawValue(provider)),
                     provider == ProviderID::claude
                         ? preferences.claudeLiveLimits.peek()
                         : !preferences.disabledProviders.peek().contains(provider));
    return asked;
}

void OnboardingView::setAsked(const QString& name, bool isAsked) {
    const auto provider = providerFromRawValue(name.toStdString());
    if (provider == ProviderID::claude)
        preferences.claudeLiveLimits = isAsked;
    else if (provider)
        preferences.setEnabled(*provider, isAsked);
}

bool OnboardingView::startsAtLogin() const {
    return loginItem.isEnabled();
}

void OnboardingView::setStartsAtLogin(bool starts) {
    loginItem.setEnabled(starts);
    // Also when that failed: then the switch, which moved already, has to move back.
    emit startsAtLoginChanged();
}

void OnboardingView::finish() {
    preferences.hasCompletedOnboarding = true;
    emit finished();
}

} // namespace tokwatch

#include "moc_OnboardingView.cpp"

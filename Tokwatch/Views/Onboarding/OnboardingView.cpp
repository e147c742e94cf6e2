#include "Tokwatch/Views/Onboarding/OnboardingView.h"

#include "KivoLaunch/LoginItem.h"
#include "Tokwatch/Display/StatusTitle.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Common/Text.h"

namespace tokwatch {

OnboardingView::OnboardingView(Preferences& userPreferences, const ProviderLocations& locations,
                               kivo::LoginItem& login)
    : preferences(userPreferences), loginItem(login), steps(onboardingSteps(locations)),
      places(searchedPlaces(locations)),
      liveLimitsNotifier(preferences.claudeLiveLimits.addNotifier([this] { emit askedChanged(); })),
      disabledNotifier(preferences.disabledProviders.addNotifier([this] { emit askedChanged(); })),
      signUpdater(
          [this] {
              // While no limit is known, which is before the welcome is finished.
              const StatusTitle title = statusTitle(preferences, {}, Date());
              return title.provider ? text(rawValue(*title.provider)) : QString();
          },
          [this](const QString& next) { itemSign = next; }) {
    signUpdater.arm();
}

QVariantList OnboardingView::stepList() const {
    QVariantList list;
    for (const OnboardingStep& step : steps)
        list.append(QVariant::fromValue(step));
    return list;
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

#include "OnboardingView.h"

#include "Preferences.h"

namespace tokwatch {

OnboardingView::OnboardingView(Preferences& userPreferences, const ProviderLocations& locations)
    : preferences(userPreferences), steps(onboardingSteps(locations)),
      liveLimitsNotifier(
          preferences.claudeLiveLimits.addNotifier([this] { emit liveLimitsChanged(); })) {}

QString OnboardingView::title() {
    return QStringLiteral("Welcome to Tokwatch");
}

QString OnboardingView::purpose() {
    return QStringLiteral("What is left of your limits, and what your tokens would cost.");
}

QString OnboardingView::progress() const {
    return QString("Step %1 of %2").arg(place + 1).arg(count());
}

QString OnboardingView::nextText() const {
    return isLast() ? QStringLiteral("Start Using Tokwatch") : QStringLiteral("Continue");
}

bool OnboardingView::liveLimits() const {
    return preferences.claudeLiveLimits.peek();
}

void OnboardingView::setLiveLimits(bool isOn) {
    preferences.claudeLiveLimits = isOn;
}

void OnboardingView::next() {
    if (isLast())
        skip();
    else
        go(place + 1);
}

void OnboardingView::back() {
    if (!isFirst()) go(place - 1);
}

void OnboardingView::skip() {
    preferences.hasCompletedOnboarding = true;
    emit finished();
}

void OnboardingView::go(int step) {
    place = step;
    emit currentChanged();
}

} // namespace tokwatch

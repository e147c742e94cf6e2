#include "Tokwatch/Views/Onboarding/OnboardingSteps.h"

#include "Tokwatch/Views/Common/HomePath.h"
#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Limits/UsageHosts.h"

#include <QStringList>

namespace tokwatch {
namespace {

OnboardingStep step(ProviderID provider, const ProviderLocations& locations) {
    const auto path = [&locations](const std::filesystem::path& whole) {
        return homePath(whole, locations.home);
    };
    OnboardingStep step{text(rawValue(provider)), text(displayName(provider)), {}, {}, false};
    switch (provider) {
    case ProviderID::claude:
        step.reads = "reads " + path(locations.claudeProjects());
        step.asks = QString("Asks %1 what is left, with Claude Code's login").arg(claudeHost);
        step.isLiveLimits = true;
        break;
    case ProviderID::codex:
        step.reads = "reads " + path(locations.codexRoots()[0]);
        step.asks =
            QString("Asks %1 with Codex's login when the sessions tell no limits").arg(codexHost);
        break;
    case ProviderID::grok:
        step.reads = "reads " + path(locations.grokSessions()) + ", asks nobody";
        break;
    case ProviderID::cursor:
        step.reads = "is only detected, shows no usage yet";
        break;
    }
    return step;
}

OnboardingStep nothingFound(const ProviderLocations& locations) {
    QStringList places;
    const auto add = [&](const std::filesystem::path& whole) {
        places.append(homePath(whole, locations.home));
    };
    add(locations.claudeProjects());
    add(locations.codexRoots()[0]);
    add(locations.grokSessions());
    add(locations.cursorStateDBOnLinux());
    return {{},
            "No assistant was found yet",
            {},
            "It will appear by itself once you have used one. Tokwatch looks in " +
                places.join(QStringLiteral(", ")) + ".",
            false};
}

} // namespace

std::vector<OnboardingStep> onboardingSteps(const ProviderLocations& locations) {
    std::vector<OnboardingStep> steps;
    for (const ProviderID provider : allCases<ProviderID>)
        if (locations.isPresent(provider)) steps.push_back(step(provider, locations));
    if (steps.empty()) steps.push_back(nothingFound(locations));
    return steps;
}

} // namespace tokwatch

#include "Tokwatch/Views/Onboarding/OnboardingSteps.h"

#include "Tokwatch/Views/Common/HomePath.h"
#include "Tokwatch/Views/Common/SearchedPlaces.h"
#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Limits/UsageServers.h"

namespace tokwatch {
namespace {

OnboardingStep step(ProviderID provider, const ProviderLocations& locations) {
    OnboardingStep step{text(rawValue(provider)), text(displayName(provider)), {}, {}, {}};
    if (const auto roots = locations.logRoots(provider); !roots.empty())
        step.reads = "reads " + homePath(roots.front(), locations.home);
    switch (provider) {
    case ProviderID::claude:
        step.asks = QString("Asks %1 what is left, with Claude Code's login").arg(claudeServer);
        step.switchText = "Live limits";
        break;
    case ProviderID::codex:
        step.asks =
            QString("Asks %1 with Codex's login if the logs tell no limits").arg(codexServer);
        step.switchText = "Show limits";
        break;
    case ProviderID::grok:
        step.reads += ", asks nobody";
        break;
    case ProviderID::cursor:
        step.reads = "is only detected, shows no usage yet";
        break;
    }
    return step;
}

OnboardingStep nothingFound(const ProviderLocations& locations) {
    return {{},
            "No assistant was found yet",
            {},
            "It will appear by itself once you have used one. Tokwatch looks in " +
                searchedPlaces(locations).join(QStringLiteral(", ")) + ".",
            {}};
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

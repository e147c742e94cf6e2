#include "Tokwatch/Views/Onboarding/OnboardingSteps.h"

#include "Tokwatch/Display/HomePath.h"
#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Limits/UsageHosts.h"

namespace tokwatch {
namespace {

OnboardingStep step(ProviderID provider, const ProviderLocations& locations) {
    OnboardingStep step{text(rawValue(provider)), text(displayName(provider)), {}, {}, {}};
    if (const auto roots = locations.logRoots(provider); !roots.empty())
        step.reads = "reads " + text(homePath(roots.front(), locations.home));
    switch (provider) {
    case ProviderID::claude:
        step.asks = QString("Asks %1 what is left, with Claude Code's login").arg(claudeHost);
        step.switchText = "Live limits";
        break;
    case ProviderID::codex:
        step.asks = QString("Asks %1 with Codex's login if the logs tell no limits").arg(codexHost);
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

} // namespace

std::vector<OnboardingStep> onboardingSteps(const ProviderLocations& locations) {
    std::vector<OnboardingStep> steps;
    for (const ProviderID provider : allCases<ProviderID>)
        if (locations.isPresent(provider)) steps.push_back(step(provider, locations));
    return steps;
}

} // namespace tokwatch

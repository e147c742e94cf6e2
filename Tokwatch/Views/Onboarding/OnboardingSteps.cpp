#include "OnboardingSteps.h"

#include "HomePath.h"
#include "Text.h"
#include "UsageHosts.h"

namespace tokwatch {
namespace {

QVariant fact(const char* symbol, const QString& title, const QString& sentence,
              bool isLiveLimits = false) {
    return QVariant::fromValue(OnboardingFact{symbol, title, sentence, isLiveLimits});
}

QVariant reads(const QString& place) {
    return fact("folder", "Reads " + place,
                "The time, the model and the token counts of each answer. What you and the "
                "assistant wrote is skipped.");
}

QVariantList facts(ProviderID provider, const ProviderLocations& locations) {
    const auto path = [&locations](const std::filesystem::path& whole) {
        return homePath(whole, locations.home);
    };
    switch (provider) {
    case ProviderID::claude:
        return {
            reads(path(locations.claudeProjects())),
            fact("lock", "Asks for Claude Code's login",
                 QString("Tokwatch needs it to ask how much of your limits is left. It goes to %1 "
                         "and nowhere else. Your keyring may want you to allow it.")
                     .arg(claudeHost),
                 true)};
    case ProviderID::codex:
        return {
            reads(path(locations.codexRoots()[0])),
            fact("lock", "Asks for Codex's login",
                 QString("When the session files tell no recent limits, the login in %1 goes to "
                         "%2, and nowhere else, to ask for them.")
                     .arg(path(locations.codexAuthFile()), codexHost))};
    case ProviderID::grok:
        return {reads(path(locations.grokSessions())),
                fact("lock", "Asks for no login", "Grok does not publish its limits.")};
    case ProviderID::cursor:
        return {fact("folder", "Looks for " + path(locations.cursorStateDB()),
                     "Only whether it exists: Cursor shows no usage data yet."),
                fact("lock", "Asks for no login", "Live limits are not available in 1.0.")};
    }
    return {};
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
    return {QString(),
            "No assistant was found yet",
            "It will appear by itself once you have used one.",
            {fact("folder", "Tokwatch looks here", places.join(u'\n'))}};
}

} // namespace

std::vector<OnboardingStep> onboardingSteps(const ProviderLocations& locations) {
    std::vector<OnboardingStep> steps;
    for (const ProviderID provider : allProviders) {
        if (!locations.isPresent(provider)) continue;
        steps.push_back({text(rawValue(provider)), text(displayName(provider)),
                         "Found on this computer", facts(provider, locations)});
    }
    if (steps.empty()) steps.push_back(nothingFound(locations));
    return steps;
}

} // namespace tokwatch

#include "StatusNotice.h"

#include "Text.h"

namespace tokwatch {
namespace {

/// What the user signs in with.
QString toolName(ProviderID provider) {
    return provider == ProviderID::claude ? QString("Claude Code") : text(displayName(provider));
}

StatusNotice unavailable(ProviderID provider, bool claudeLiveLimits) {
    switch (provider) {
    case ProviderID::claude:
        if (!claudeLiveLimits)
            return {"Live limits are turned off.", true, ProviderAction::turnOnLiveLimits,
                    "Turn On"};
        break;
    case ProviderID::codex:
        break;
    case ProviderID::grok:
        return {"Usage only, no published limits", true, ProviderAction::none, {}, true};
    case ProviderID::cursor:
        return {"Installed, no usage data yet", true, ProviderAction::none, {}, true};
    }
    return {QString("No login was found. Sign in with %1, then try again.").arg(toolName(provider)),
            true, ProviderAction::retry, "Try Again"};
}

} // namespace

StatusNotice statusNotice(ProviderID provider, const ProviderLimits* limits,
                          const LimitJudgement& judgement) {
    const bool hasLiveLimits = provider == ProviderID::codex ||
                               (provider == ProviderID::claude && judgement.claudeLiveLimits);
    if (limits == nullptr && hasLiveLimits && !judgement.mayAsk)
        return {"The limits are asked for once the welcome is finished.", true,
                ProviderAction::finishWelcome, "Open Welcome"};
    if (limits == nullptr && hasLiveLimits)
        return {"Looking up the limits…", true, ProviderAction::none, {}};
    const QString name = text(displayName(provider));
    switch (limits == nullptr ? ProviderStatus::unavailable : limits->status) {
    case ProviderStatus::ok:
        if (limits->windows.empty() && !limits->credits)
            return {name + " reports no limits for this plan.", true, ProviderAction::none, {}};
        return {};
    case ProviderStatus::signInNeeded:
        return {QString("The login has expired. Sign in with %1, then try again.")
                    .arg(toolName(provider)),
                false, ProviderAction::retry, "Try Again"};
    case ProviderStatus::unreachable:
        return {name + " could not be reached.", false, ProviderAction::retry, "Try Again"};
    case ProviderStatus::rateLimited:
        return {name + " is answering less often for now. Tokwatch asks again by itself.",
                true,
                ProviderAction::none,
                {}};
    case ProviderStatus::accessDenied:
        return {"Tokwatch was not allowed to read the login.", false, ProviderAction::allowAccess,
                "Allow Access"};
    case ProviderStatus::unavailable:
        break;
    }
    return unavailable(provider, judgement.claudeLiveLimits);
}

} // namespace tokwatch

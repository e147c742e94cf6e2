#include "Tokwatch/Views/Popover/StatusNotice.h"

#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Views/Common/Text.h"

namespace tokwatch {
namespace {

/// What the user signs in with.
QString toolName(ProviderID provider) {
    return text(traits(provider).toolName);
}

StatusNotice retry(const QString& sentence, bool isCalm = false) {
    return {sentence, isCalm, ProviderAction::retry, "Try Again"};
}

StatusNotice waiting(const QString& sentence) {
    return {sentence, true, ProviderAction::none, {}};
}

bool areLiveLimitsOff(const StatusSubject& subject) {
    return subject.provider == ProviderID::claude && !subject.judgement.claudeLiveLimits;
}

StatusNotice unavailable(const StatusSubject& subject) {
    if (areLiveLimitsOff(subject))
        return {"Live limits are turned off.", true, ProviderAction::turnOnLiveLimits, "Turn On"};
    return retry(QString("No login was found. Sign in with %1, then try again.")
                     .arg(toolName(subject.provider)),
                 true);
}

StatusNotice unknown(const StatusSubject& subject) {
    if (areLiveLimitsOff(subject)) return unavailable(subject);
    if (!subject.judgement.mayAsk)
        return {"The limits are asked for once the welcome is finished.", true,
                ProviderAction::finishWelcome, "Open Welcome"};
    return waiting("Looking up the limits…");
}

} // namespace

StatusNotice statusNotice(const StatusSubject& subject, Date now, const Calendar& calendar) {
    if (subject.limits == nullptr) return unknown(subject);
    const QString name = text(displayName(subject.provider));
    switch (subject.limits->status) {
    case ProviderStatus::ok:
        if (subject.limits->windows.empty() && !subject.limits->credits)
            return waiting(name + " reports no limits for this plan.");
        return {};
    case ProviderStatus::signInNeeded:
        return retry(
            QString("The login has expired. Using %1 renews it.").arg(toolName(subject.provider)));
    case ProviderStatus::unreachable:
        return retry(name + " could not be reached.");
    case ProviderStatus::rateLimited: {
        const QString next = subject.nextFetch && *subject.nextFetch > now
                                 ? "Next try at\u00a0" +
                                       text(DayFormat::coming(*subject.nextFetch, now, calendar)) +
                                       "."
                                 : QStringLiteral("It asks again by itself.");
        return waiting(name + " limits how often Tokwatch may ask. " + next);
    }
    case ProviderStatus::accessDenied:
        return {"Tokwatch was not allowed to read the login.", false, ProviderAction::allowAccess,
                "Allow Access"};
    case ProviderStatus::unavailable:
        break;
    }
    return unavailable(subject);
}

} // namespace tokwatch

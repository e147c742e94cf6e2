#include "Tokwatch/Views/Popover/StatusNotice.h"

#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/LimitTexts.h"
#include "Tokwatch/Views/Common/Text.h"

namespace tokwatch {
namespace {

StatusNotice withAction(const LimitNotice& notice) {
    const auto with = [&notice](ProviderAction::Value action, const char* words) {
        return StatusNotice{text(notice.sentence), notice.isCalm, action, words};
    };
    switch (notice.remedy) {
    case LimitNotice::Remedy::none:
        break;
    case LimitNotice::Remedy::retry:
        return with(ProviderAction::retry, "Try Again");
    case LimitNotice::Remedy::allowAccess:
        return with(ProviderAction::allowAccess, "Allow Access");
    case LimitNotice::Remedy::turnOnLiveLimits:
        return with(ProviderAction::turnOnLiveLimits, "Turn On");
    }
    return with(ProviderAction::none, "");
}

QString nextTry(std::optional<Date> moment, Date now, const Calendar& calendar) {
    if (!moment || *moment <= now) return QStringLiteral("It asks again by itself.");
    return "Next try at\u00a0" + text(DayFormat::coming(*moment, now, calendar)) + ".";
}

StatusNotice waiting(const QString& sentence) {
    return {sentence, true, ProviderAction::none, {}};
}

bool areLiveLimitsOff(const StatusSubject& subject) {
    return subject.provider == ProviderID::claude && !subject.judgement.claudeLiveLimits;
}

StatusNotice unknown(const StatusSubject& subject) {
    if (areLiveLimitsOff(subject)) return withAction(liveLimitsAreOff());
    if (!subject.judgement.mayAsk)
        return {"The limits are asked for once the welcome is finished.", true,
                ProviderAction::finishWelcome, "Open Welcome"};
    return waiting("Looking up the limits…");
}

} // namespace

StatusNotice statusNotice(const StatusSubject& subject, Date now, const Calendar& calendar) {
    if (subject.limits == nullptr) return unknown(subject);
    const ProviderLimits& limits = *subject.limits;
    StatusNotice notice =
        withAction(limitNotice(subject.provider, limits, subject.judgement.claudeLiveLimits));
    if (limits.status == ProviderStatus::rateLimited)
        notice.sentence += u' ' + nextTry(subject.nextFetch, now, calendar);
    return notice;
}

} // namespace tokwatch

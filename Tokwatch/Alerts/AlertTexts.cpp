#include "Tokwatch/Alerts/AlertTexts.h"

#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/LimitTexts.h"
#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Presentation/WindowLabel.h"

namespace tokwatch {
namespace {

Alert::Urgency urgencyOf(AlertKind kind) {
    switch (kind) {
    case AlertKind::usedUp:
    case AlertKind::critical:
        return Alert::Urgency::critical;
    case AlertKind::reset:
        return Alert::Urgency::low;
    case AlertKind::runsOut:
    case AlertKind::warning:
    case AlertKind::signIn:
        break;
    }
    return Alert::Urgency::normal;
}

/// "Session 8% left"
std::string headline(const DueAlert& due, const LimitBarModel& bar, Date now,
                     const Calendar& calendar) {
    const std::string label = windowLabel(due.window);
    switch (due.kind) {
    case AlertKind::usedUp:
        return label + " is used up";
    case AlertKind::runsOut:
        return label + " runs out at " + DayFormat::coming(*due.usedUpAt, now, calendar);
    case AlertKind::reset:
        return label + " has reset";
    case AlertKind::critical:
    case AlertKind::warning:
        return label + ' ' + bar.percentLeftText + " left";
    case AlertKind::signIn:
        break;
    }
    return "Sign-in needed";
}

/// What of the limit the headline does not say.
std::string details(const DueAlert& due, const LimitBarModel& bar, Date now,
                    const Calendar& calendar) {
    if (due.kind == AlertKind::signIn) {
        ProviderLimits limits;
        limits.status = ProviderStatus::signInNeeded;
        return limitNotice(due.provider, limits, true).sentence;
    }
    const bool saysHowMuch = due.kind == AlertKind::runsOut || due.kind == AlertKind::reset;
    const bool resetsLater = due.window.resetsAt && *due.window.resetsAt > now;
    std::string text = saysHowMuch ? bar.percentLeftText + " left" : "";
    if (!resetsLater) return text;
    std::string reset = LimitTexts::reset(due.window, bar, now, calendar);
    if (!text.empty()) return text + " · " + reset;
    reset.front() = 'R';
    return reset;
}

} // namespace

std::string nameOf(const AlertSubject& subject) {
    return std::string(rawValue(subject.provider)) + '/' + subject.window;
}

Alert alertOf(const DueAlert& due, Date now, const Calendar& calendar) {
    const LimitBarModel bar(due.window, now);
    return {nameOf(due.subject()),
            std::string(displayName(due.provider)) + " · " + headline(due, bar, now, calendar),
            details(due, bar, now, calendar), urgencyOf(due.kind)};
}

} // namespace tokwatch

#pragma once

#include "Tokwatch/Views/Popover/LimitRows.h"

#include <optional>

namespace tokwatch {

/// What a provider's status means to the user, and the one thing that helps.
struct StatusNotice {
    QString sentence; ///< empty when there is nothing to say
    bool isCalm = true;
    ProviderAction::Value action = ProviderAction::none;
    QString actionText;
};

/// What the notice is about.
struct StatusSubject {
    ProviderID provider;
    const ProviderLimits* limits = nullptr; ///< null while nothing is known yet
    LimitJudgement judgement;
    std::optional<Date> nextFetch; ///< when the provider is asked again by itself
};
StatusNotice statusNotice(const StatusSubject& subject, Date now, const Calendar& calendar);

} // namespace tokwatch

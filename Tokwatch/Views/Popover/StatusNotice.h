#pragma once

#include "LimitRows.h"

namespace tokwatch {

/// What a provider's status means to the user, and the one thing that helps.
struct StatusNotice {
    QString sentence; ///< empty when there is nothing to say
    bool isCalm = true;
    ProviderAction::Value action = ProviderAction::none;
    QString actionText;
    bool isBrief = false; ///< short enough to stand beside the provider's name
};

/// `limits` is null while nothing is known yet.
StatusNotice statusNotice(ProviderID provider, const ProviderLimits* limits,
                          const LimitJudgement& judgement);

} // namespace tokwatch

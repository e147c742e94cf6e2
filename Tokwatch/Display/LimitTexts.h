#pragma once

#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Support/Calendar.h"

#include <string>

namespace tokwatch {

/// What there is to say of limits beside their numbers. Parts of sentences begin small.
struct LimitTexts {
    /// "resets in 3h 5m · 20:45", "has reset"; empty when the reset is unknown.
    static std::string reset(const LimitWindow& window, const LimitBarModel& bar, Date now,
                             const Calendar& calendar);
    /// "$12.40 of $50.00 used", "$4.20 left", "unlimited"; empty when nothing is known.
    static std::string credits(const Credits& credits);
};

/// What a provider's status means to the user, and the one thing that helps.
struct LimitNotice {
    enum class Remedy { none, retry, allowAccess, turnOnLiveLimits };

    std::string sentence; ///< empty when there is nothing to say
    bool isCalm = true;   ///< nothing is wrong
    Remedy remedy = Remedy::none;

    friend bool operator==(const LimitNotice&, const LimitNotice&) = default;
};
LimitNotice limitNotice(ProviderID provider, const ProviderLimits& limits, bool claudeLiveLimits);
/// The notice of a provider that nobody asks because the user does not want it.
LimitNotice liveLimitsAreOff();

} // namespace tokwatch

#pragma once

#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Support/Calendar.h"

#include <optional>
#include <string>

namespace tokwatch {

/// What there is to say of limits beside their numbers. Parts of sentences begin small.
struct LimitTexts {
    /// "resets in 3h 5m · 20:45", "has reset"; empty when the reset is unknown.
    static std::string reset(const LimitWindow& window, const LimitBarModel& bar, Date now,
                             const Calendar& calendar);
    /// The same without the time of day: "resets in 3h 5m".
    static std::string shortReset(const LimitWindow& window, const LimitBarModel& bar, Date now);
    /// "runs out about 14:00": to five minutes where that is hours away, else to the hour. It is
    /// never told of the past.
    static std::string runOut(Date moment, Date now, const Calendar& calendar);
    /// "$12.40 of $50.00 used", "$4.20 left", "unlimited"; empty when nothing is known.
    static std::string credits(const Credits& credits);
    /// "60% used in 50% of the time"; empty when the time is unknown.
    static std::string pace(const LimitBarModel& bar);
    /// What a mark on a limit's bar tells, in a sentence; empty when the time is unknown.
    static std::string timeMark(const LimitBarModel& bar);
    /// When a service was asked last and a retry asks again: "tried just now · again in 24 s";
    /// empty when that is at once.
    static std::string retry(std::optional<Date> lastAttempt, std::optional<Date> nextRetry,
                             Date now, const Calendar& calendar);
    /// When a service is asked again by itself, in a sentence.
    static std::string nextTry(std::optional<Date> moment, Date now, const Calendar& calendar);
    /// Of a provider without limits to show: "Grok publishes no limits".
    static std::string quiet(ProviderID provider, bool isPresent);
};

/// What a provider's status means to the user, and the one thing that helps.
struct LimitNotice {
    enum class Remedy { none, retry, allowAccess, turnOnLiveLimits, finishWelcome };

    std::string sentence; ///< empty when there is nothing to say
    bool isCalm = true;   ///< nothing is wrong
    Remedy remedy = Remedy::none;

    friend bool operator==(const LimitNotice&, const LimitNotice&) = default;
};
LimitNotice limitNotice(ProviderID provider, const ProviderLimits& limits, bool claudeLiveLimits);
/// Of a provider that nothing is known of yet. `mayAsk`: the welcome is finished.
LimitNotice unknownLimitsNotice(ProviderID provider, bool claudeLiveLimits, bool mayAsk);

} // namespace tokwatch

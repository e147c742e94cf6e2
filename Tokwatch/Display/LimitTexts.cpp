#include "Tokwatch/Display/LimitTexts.h"

#include "Tokwatch/Display/DayFormat.h"
#include "TokwatchCore/Presentation/MeterFormat.h"

#include <cmath>

namespace tokwatch {
namespace {

using enum LimitNotice::Remedy;

std::string percent(double fraction) {
    return std::to_string(std::lround(fraction * 100)) + "%";
}

/// From here on a forecast is hours off.
constexpr Seconds farAway{12 * 3600};

/// To so many minutes of the hour.
Date rounded(Date moment, int minutes, const Calendar& calendar) {
    const double seconds = std::fmod(unixSeconds(moment), 60);
    const double past = calendar.fields(moment).minute * 60 + seconds;
    const double unit = minutes * 60;
    return moment + Seconds{std::round(past / unit) * unit - past};
}

/// Of a provider that nobody asks because the user does not want it.
LimitNotice liveLimitsAreOff() {
    return {"Live limits are turned off.", true, turnOnLiveLimits};
}

/// Its usage is known, and its limits to nobody.
bool hidesLimits(ProviderID provider) {
    return !traits(provider).publishesLimits && traits(provider).logFormat != LogFormat::none;
}

LimitNotice unavailable(ProviderID provider, const std::string& tool, bool claudeLiveLimits) {
    if (provider == ProviderID::claude && !claudeLiveLimits) return liveLimitsAreOff();
    const std::string name(displayName(provider));
    if (hidesLimits(provider)) return {name + " does not publish its limits."};
    if (traits(provider).logFormat == LogFormat::none) return {name + " is only detected."};
    return {"No login was found. Sign in with " + tool + ", then try again.", true, retry};
}

} // namespace

std::string LimitTexts::reset(const LimitWindow& window, const LimitBarModel& bar, Date now,
                              const Calendar& calendar) {
    std::string text = shortReset(window, bar, now);
    if (!bar.resetText || *window.resetsAt <= now) return text;
    return text + " · " + DayFormat::coming(*window.resetsAt, now, calendar);
}

std::string LimitTexts::shortReset(const LimitWindow& window, const LimitBarModel& bar, Date now) {
    if (!bar.resetText) return "";
    return *window.resetsAt <= now ? "has reset" : "resets in " + *bar.resetText;
}

std::string LimitTexts::runOut(Date moment, Date now, const Calendar& calendar) {
    const Date about = rounded(moment, moment - now < farAway ? 5 : 60, calendar);
    return "runs out about " + DayFormat::coming(about < now ? moment : about, now, calendar);
}

std::string LimitTexts::credits(const Credits& credits) {
    const auto money = [](double usd) { return MeterFormat::money(usd); };
    if (credits.spentUSD && credits.limitUSD)
        return money(*credits.spentUSD) + " of " + money(*credits.limitUSD) + " used";
    if (credits.balanceUSD) return money(*credits.balanceUSD) + " left";
    if (credits.spentUSD)
        return money(*credits.spentUSD) + (credits.unlimited ? " used, no limit" : " used");
    if (credits.unlimited) return "unlimited";
    return credits.limitUSD ? "limit " + money(*credits.limitUSD) : "";
}

std::string LimitTexts::pace(const LimitBarModel& bar) {
    if (!bar.timeLeftFraction) return "";
    return percent(1 - bar.leftFraction) + " used in " + percent(1 - *bar.timeLeftFraction) +
           " of the time";
}

std::string LimitTexts::timeMark(const LimitBarModel& bar) {
    if (!bar.timeLeftFraction) return "";
    return "This mark is time: " + percent(*bar.timeLeftFraction) +
           " of this limit's period is left";
}

std::string LimitTexts::retry(std::optional<Date> lastAttempt, std::optional<Date> nextRetry,
                              Date now, const Calendar& calendar) {
    if (!lastAttempt || !nextRetry || *nextRetry <= now) return "";
    return "tried " + TimeTexts::age(*lastAttempt, now, calendar) + " · again in " +
           TimeTexts::remaining(*nextRetry, now);
}

std::string LimitTexts::nextTry(std::optional<Date> moment, Date now, const Calendar& calendar) {
    if (!moment || *moment <= now) return "It asks again by itself.";
    return "Next try at\u00a0" + DayFormat::coming(*moment, now, calendar) + ".";
}

std::string LimitTexts::quiet(ProviderID provider, bool isPresent) {
    const std::string name(displayName(provider));
    if (!isPresent) return name + " was not found";
    return name + (hidesLimits(provider) ? " publishes no limits" : " has no usage data yet");
}

LimitNotice unknownLimitsNotice(ProviderID provider, bool claudeLiveLimits, bool mayAsk) {
    if (provider == ProviderID::claude && !claudeLiveLimits) return liveLimitsAreOff();
    if (mayAsk) return {"Looking up the limits…"};
    return {"The limits are asked for once the welcome is finished.", true, finishWelcome};
}

LimitNotice limitNotice(ProviderID provider, const ProviderLimits& limits, bool claudeLiveLimits) {
    const std::string name(displayName(provider));
    const std::string tool(traits(provider).toolName);
    switch (limits.status) {
    case ProviderStatus::ok:
        if (!limits.windows.empty() || limits.credits) return {};
        return {name + " reports no limits for this plan."};
    case ProviderStatus::signInNeeded:
        return {"The login has expired. Using " + tool + " renews it.", false, retry};
    case ProviderStatus::unreachable:
        return {name + " could not be reached.", false, retry};
    case ProviderStatus::rateLimited:
        return {name + " limits how often Tokwatch may ask."};
    case ProviderStatus::accessDenied:
        return {"Tokwatch was not allowed to read the login.", false, allowAccess};
    case ProviderStatus::unavailable:
        break;
    }
    return unavailable(provider, tool, claudeLiveLimits);
}

} // namespace tokwatch

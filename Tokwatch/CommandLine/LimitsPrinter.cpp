#include "Tokwatch/CommandLine/LimitsPrinter.h"

#include "Tokwatch/CommandLine/Table.h"
#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Limits/RefreshPolicy.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Presentation/LimitAge.h"
#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Presentation/MeterFormat.h"
#include "TokwatchCore/Presentation/WindowLabel.h"

#include <algorithm>

namespace tokwatch {
namespace {

constexpr std::size_t barColumns = 20;
/// Labels and plans come from services.
constexpr std::size_t longestLabel = 40;

/// What a status means to the user; empty where there is nothing to say.
std::string sentence(ProviderID provider, const ProviderLimits& limits, bool claudeLiveLimits) {
    const bool isClaude = provider == ProviderID::claude;
    const std::string name(displayName(provider));
    const std::string tool(traits(provider).toolName);
    switch (limits.status) {
    case ProviderStatus::ok:
        return limits.windows.empty() && !limits.credits
                   ? name + " reports no limits for this plan."
                   : "";
    case ProviderStatus::signInNeeded:
        return "The login has expired. Using " + tool + " renews it.";
    case ProviderStatus::unreachable:
        return name + " could not be reached.";
    case ProviderStatus::rateLimited:
        return name + " limits how often Tokwatch may ask.";
    case ProviderStatus::accessDenied:
        return "Tokwatch was not allowed to read the login.";
    case ProviderStatus::unavailable:
        break;
    }
    if (isClaude && !claudeLiveLimits)
        return "Live limits are turned off; tokwatch preferences set claudeLiveLimits true turns "
               "them on.";
    if (provider == ProviderID::grok) return "Grok does not publish its limits.";
    if (provider == ProviderID::cursor) return "Cursor is only detected.";
    return "No login was found. Sign in with " + tool + ", then try again.";
}

std::string resetText(const LimitWindow& window, const LimitBarModel& bar, Date now,
                      const Calendar& calendar) {
    if (!bar.resetText) return "";
    if (*window.resetsAt <= now) return "has reset";
    return "resets in " + *bar.resetText + " · " +
           DayFormat::coming(*window.resetsAt, now, calendar);
}

/// "$12.34 of $50.00 used"; empty when nothing is known.
std::string amounts(const Credits& credits) {
    const auto money = [](double usd) { return MeterFormat::money(usd); };
    if (credits.spentUSD && credits.limitUSD)
        return money(*credits.spentUSD) + " of " + money(*credits.limitUSD) + " used";
    if (credits.balanceUSD) return money(*credits.balanceUSD) + " left";
    if (credits.spentUSD)
        return money(*credits.spentUSD) + (credits.unlimited ? " used, no limit" : " used");
    if (credits.unlimited) return "no limit";
    return credits.limitUSD ? "limit " + money(*credits.limitUSD) : "";
}

class LimitsPrinter {
  public:
    LimitsPrinter(const CommandEnvironment& e, const Preferences& p)
        : environment(e), preferences(p), now(e.now()) {}

    void add(ProviderID provider, const ProviderLimits& limits) {
        std::string heading(displayName(provider));
        if (limits.plan) heading += " · " + fitted(*limits.plan, longestLabel);
        table.add({{heading, Tone::bold}});
        for (const LimitWindow& window : limits.windows)
            addWindow(window, limits.fetchedAt);
        if (limits.credits) addCredits(*limits.credits);
        const std::string notice = sentence(provider, limits, preferences.claudeLiveLimits.peek());
        if (!notice.empty()) table.add({{"  " + notice, toneOf(limits.status)}});
    }

    void print() {
        if (table.isEmpty())
            environment.terminal.line(
                "No limits are known yet; tokwatch limits --refresh asks for them.");
        else
            table.print(environment.terminal);
    }

  private:
    void addWindow(const LimitWindow& window, Date fetchedAt) {
        const LimitBarModel model(window, now);
        table.add({{"  " + fitted(windowLabel(window), longestLabel)},
                   {model.percentLeftText + " left", toneOf(model.leftFraction)},
                   {track(model.leftFraction), toneOf(model.leftFraction)},
                   {resetText(window, model, now, environment.calendar())},
                   {std::string(caption(model.pace)),
                    model.pace == Pace::over ? Tone::yellow : Tone::dim},
                   {ageText(window, fetchedAt), Tone::dim}});
    }

    void addCredits(const Credits& credits) {
        const std::string text = amounts(credits);
        if (!text.empty()) table.add({{"  " + fitted(credits.label, longestLabel) + ": " + text}});
    }

    /// A bar as wide as the whole limit, so that what is gone can be seen.
    static std::string track(double left) {
        std::string filled = bar(left, barColumns);
        for (std::size_t width = displayWidth(filled); width < barColumns; ++width)
            filled += "·";
        return filled;
    }

    /// Of a number that is not of now: the moment that it is of.
    std::string ageText(const LimitWindow& window, Date fetchedAt) const {
        const bool isLive = std::holds_alternative<LimitSource::Live>(window.source.value);
        const Date moment = LimitAge::asOf(window, fetchedAt);
        if (isLive && std::chrono::abs(now - moment) < RefreshPolicy::baseInterval) return "";
        return "as of " + DayFormat::moment(moment, now, environment.calendar());
    }

    Tone toneOf(double left) const {
        if (isAtOrBelow(left, preferences.criticalThreshold.peek())) return Tone::red;
        if (isAtOrBelow(left, preferences.warningThreshold.peek())) return Tone::yellow;
        return Tone::green;
    }

    static Tone toneOf(ProviderStatus status) {
        const bool isCalm = status == ProviderStatus::ok || status == ProviderStatus::unavailable ||
                            status == ProviderStatus::rateLimited;
        return isCalm ? Tone::dim : Tone::yellow;
    }

    const CommandEnvironment& environment;
    const Preferences& preferences;
    Date now;
    Table table{{{""}, {"", Table::Align::right}, {""}, {""}, {""}, {""}}};
};

} // namespace

void printLimits(const CommandEnvironment& environment, const Preferences& preferences,
                 const LimitsByProvider& limits, const std::vector<ProviderID>& order) {
    LimitsPrinter printer(environment, preferences);
    for (const ProviderID provider : order) {
        const auto found = limits.find(provider);
        if (found != limits.end()) printer.add(provider, found->second);
    }
    printer.print();
}

} // namespace tokwatch

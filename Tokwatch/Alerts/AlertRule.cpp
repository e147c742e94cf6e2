#include "Tokwatch/Alerts/AlertRule.h"

#include "TokwatchCore/Presentation/LimitAge.h"
#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Records/LimitSample.h"
#include "TokwatchCore/Records/ToldLimits.h"

#include <algorithm>
#include <utility>

namespace tokwatch {
namespace {

/// A fraction left: so far from a level is away from it.
constexpr double margin = 0.02;
constexpr Seconds soon{3600};
/// Between two fetches a forecast stands still while time goes on, and the next one moves it: what
/// has come within the hour is not beyond it again before this.
constexpr Seconds notSoon{75 * 60};
/// Beyond any window's duration; what is older is of windows that are gone.
constexpr Seconds remembered{30 * 86'400};

bool isFresh(const LimitWindow& window, Date fetchedAt, Date now) {
    return !window.source.isStale() && !LimitAge::isOld(window, fetchedAt, now);
}

bool isSameReset(const std::optional<Date>& a, const std::optional<Date>& b) {
    return haveSameReset({{}, 0, a}, {{}, 0, b});
}

/// One window at one moment.
class WindowConsideration {
  public:
    WindowConsideration(const AlertSituation& s, ProviderID provider, const LimitWindow& w,
                        AlertOutcome& o)
        : situation(s), window(w), subject{provider, w.id},
          left(LimitBarModel(w, s.now).leftFraction), outcome(o) {
        const auto foreseen = s.usedUpAt.find(subject);
        if (foreseen != s.usedUpAt.end()) usedUpAt = foreseen->second;
    }

    void run() {
        for (const AlertKind level : levels)
            follow(level);
        const bool isCalm = std::ranges::none_of(levels, [this](auto kind) { return holds(kind); });
        if (isCalm && !mayStillRunOut()) outcome.calm.insert(subject);
        if (situation.isQuiet) return;
        std::vector<AlertKind> begun;
        std::ranges::copy_if(levels, std::back_inserter(begun),
                             [this](AlertKind kind) { return holds(kind) && counts(kind); });
        if (hasReset()) begun.push_back(AlertKind::reset);
        tell(begun);
    }

  private:
    /// The gravest first.
    static constexpr std::array levels{AlertKind::usedUp, AlertKind::critical, AlertKind::runsOut,
                                       AlertKind::warning};

    /// From which fraction left on the level is reached; none of what is no level of the fraction.
    std::optional<double> threshold(AlertKind kind) const {
        switch (kind) {
        case AlertKind::usedUp:
            return 0;
        case AlertKind::critical:
            return situation.critical;
        case AlertKind::warning:
            return situation.warning;
        case AlertKind::runsOut:
        case AlertKind::reset:
        case AlertKind::signIn:
            break;
        }
        return std::nullopt;
    }

    bool holds(AlertKind kind) const {
        if (const auto level = threshold(kind)) return isAtOrBelow(left, *level);
        return usedUpAt && *usedUpAt - situation.now <= soon && !isAtOrBelow(left, 0);
    }

    /// As it was told. Where nobody can foresee anything, nothing speaks against it.
    bool mayStillRunOut() const {
        const ToldAlert* told = record(AlertKind::runsOut);
        if (!told || isOver(*told)) return false;
        return usedUpAt ? *usedUpAt - situation.now <= notSoon
                        : !situation.lasting.contains(subject);
    }

    bool isAway(double level) const { return isAtOrBelow(level + margin, left); }

    ToldAlert* record(AlertKind kind) const {
        const auto found = std::ranges::find_if(outcome.told, [&](const ToldAlert& told) {
            return told.kind == kind && told.subject == subject;
        });
        return found == outcome.told.end() ? nullptr : &*found;
    }

    bool isOver(const ToldAlert& told) const {
        return told.resetsAt && *told.resetsAt <= situation.now;
    }

    /// Keeps what was told of a level up to date while its run lasts.
    void follow(AlertKind kind) {
        ToldAlert* told = record(kind);
        if (!told || isOver(*told)) return;
        if (const auto level = threshold(kind); level && isAway(*level)) told->isLeft = true;
        // A reset that is put off is the same one.
        if (!told->isLeft && window.resetsAt && !isSameReset(told->resetsAt, window.resetsAt))
            told->resetsAt = window.resetsAt;
    }

    /// Whether the level may be told, as far as it depends on what was told.
    bool counts(AlertKind kind) const {
        const ToldAlert* told = record(kind);
        if (!told) return true;
        if (window.resetsAt && isSameReset(told->resetsAt, window.resetsAt)) return false;
        return told->isLeft || isOver(*told);
    }

    bool hasReset() const {
        const ToldAlert* critical = record(AlertKind::critical);
        if (!critical || critical->isLeft || !isOver(*critical) || !isAway(situation.critical))
            return false;
        const ToldAlert* told = record(AlertKind::reset);
        return !told || !isSameReset(told->resetsAt, critical->resetsAt);
    }

    /// When the run resets in which it was told critical: the one before, where it is not now.
    std::optional<Date> criticalUntil() const {
        const ToldAlert* critical = record(AlertKind::critical);
        return critical ? critical->resetsAt : std::nullopt;
    }

    /// Counts all of them and tells the gravest that is wanted.
    void tell(const std::vector<AlertKind>& begun) {
        for (const AlertKind kind : begun) {
            const ToldAlert told{subject, kind, situation.now,
                                 kind == AlertKind::reset ? criticalUntil() : window.resetsAt};
            if (ToldAlert* known = record(kind))
                *known = told;
            else
                outcome.told.push_back(told);
        }
        const auto gravest = std::ranges::find_if(
            begun, [this](AlertKind kind) { return situation.wanted.contains(kind); });
        if (gravest != begun.end())
            outcome.due.push_back({*gravest, subject.provider, window, usedUpAt});
    }

    const AlertSituation& situation;
    const LimitWindow& window;
    const AlertSubject subject;
    const double left;
    std::optional<Date> usedUpAt;
    AlertOutcome& outcome;
};

void considerLogin(const AlertSituation& situation, ProviderID provider,
                   const ProviderLimits& limits, AlertOutcome& outcome) {
    if (situation.now - limits.fetchedAt > LimitAge::current) return;
    const AlertSubject login{provider, {}};
    // Codex tells its logs what the service answered to that very login.
    const bool isProven = !isTold(limits) || provider == ProviderID::codex;
    if (limits.status == ProviderStatus::ok && isProven) {
        outcome.calm.insert(login);
        std::erase_if(outcome.told, [&](const ToldAlert& told) { return told.subject == login; });
    }
    if (limits.status != ProviderStatus::signInNeeded || situation.isQuiet) return;
    if (std::ranges::count(outcome.told, login, &ToldAlert::subject) > 0) return;
    outcome.told.push_back({login, AlertKind::signIn, situation.now, {}});
    if (situation.wanted.contains(AlertKind::signIn))
        outcome.due.push_back({AlertKind::signIn, provider, {}, {}});
}

} // namespace

AlertOutcome considerAlerts(const AlertSituation& situation, ToldAlerts told) {
    AlertOutcome outcome{{}, {}, std::move(told)};
    std::erase_if(outcome.told,
                  [&](const ToldAlert& old) { return situation.now - old.toldAt > remembered; });
    for (const auto& [provider, limits] : situation.limits) {
        considerLogin(situation, provider, limits, outcome);
        for (const LimitWindow& window : limits.windows)
            if (isFresh(window, limits.fetchedAt, situation.now))
                WindowConsideration(situation, provider, window, outcome).run();
    }
    return outcome;
}

} // namespace tokwatch

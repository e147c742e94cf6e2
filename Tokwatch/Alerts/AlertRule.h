#pragma once

#include "Tokwatch/Preferences/AlertPreferences.h"
#include "TokwatchCore/Records/LimitRecords.h"

#include <compare>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tokwatch {

/// What an alert is about: a limit's window, or a provider's login, which has no window.
struct AlertSubject {
    ProviderID provider{};
    std::string window; ///< its id; empty for the login

    friend auto operator<=>(const AlertSubject&, const AlertSubject&) = default;
};

/// One thing that was told, or counts as told because its user did not want to hear of it.
struct ToldAlert {
    AlertSubject subject;
    AlertKind kind{};
    Date toldAt;
    std::optional<Date> resetsAt;        ///< of the run of the window that it was told of
    bool isLeft = false;                 ///< the level was left again before that reset
    std::optional<std::string> handle{}; ///< of the notification that showed it, where one did

    friend bool operator==(const ToldAlert&, const ToldAlert&) = default;
};
using ToldAlerts = std::vector<ToldAlert>; ///< one of each subject and kind

/// What is known at one moment.
struct AlertSituation {
    LimitsByProvider limits;               ///< of those whom the user watches
    std::map<AlertSubject, Date> usedUpAt; ///< as far as anybody can foresee it
    std::set<AlertSubject> lasting;        ///< foreseen to last until the reset, without allowance
    double warning = 0;                    ///< fractions left
    double critical = 0;
    std::set<AlertKind> wanted;
    bool isQuiet = false;
    Date now;
};

/// What is to be told now.
struct DueAlert {
    AlertKind kind{};
    ProviderID provider{};
    LimitWindow window; ///< none of a login
    std::optional<Date> usedUpAt;

    AlertSubject subject() const { return {provider, window.id}; }
    friend bool operator==(const DueAlert&, const DueAlert&) = default;
};

struct AlertOutcome {
    std::vector<DueAlert> due;
    /// Those of which nothing that was or could be told holds any more. That a limit runs out holds
    /// until the forecast is well beyond the hour, or until the reset.
    std::set<AlertSubject> calm;
    ToldAlerts told;
};

/// What to tell by what was told so far.
///
/// Each level of a window is told at most once until the window resets, and again only once the
/// level was left by two points, or by a reset. Of several that begin at once the gravest is told
/// and all count; a reset is the least of them. Old numbers, and answers that an earlier fetch
/// gave, tell nothing and change nothing. In quiet hours nothing counts: what still holds when they
/// end is told then. A login is told of once until an answer proves that it works again; what an
/// assistant tells proves nothing.
AlertOutcome considerAlerts(const AlertSituation& situation, ToldAlerts told);

} // namespace tokwatch

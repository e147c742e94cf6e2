#include "Tokwatch/Alerts/AlertRule.h"

#include "TokwatchCore/Support/Date.h"

#include <gtest/gtest.h>

namespace tokwatch {
namespace {

const Date begin = dateFromUnixSeconds(1'768'000'000);

constexpr Seconds minutes(double count) {
    return Seconds{60 * count};
}

/// One look at Claude's session, minutes after the beginning; the warning level is at 25 % left,
/// the critical one at 10 %.
struct Look {
    double minute = 0;
    double left = 1;
    std::optional<double> resetsAt = 300; ///< minute; none where the service names none
    std::string_view told;                ///< what is expected, or "" for silence

    double age = 0; ///< of the number, minutes
    bool isStale = false;
    bool isTold = false; ///< by the assistant, on this machine
    bool isQuiet = false;
    std::optional<double> usedUpAt{}; ///< minute
    std::optional<bool> isCalm{};     ///< expected where it matters
    bool lasts = false;
    ProviderStatus status = ProviderStatus::ok;
    std::set<AlertKind> unwanted{};
};

struct Story {
    const char* says;
    std::vector<Look> looks;
};

AlertSituation situationOf(const Look& look) {
    AlertSituation situation;
    situation.warning = 0.25;
    situation.critical = 0.1;
    situation.isQuiet = look.isQuiet;
    situation.now = begin + minutes(look.minute);
    for (const AlertKind kind : allCases<AlertKind>)
        if (!look.unwanted.contains(kind)) situation.wanted.insert(kind);
    const auto at = [](std::optional<double> minute) {
        return minute ? std::optional(begin + minutes(*minute)) : std::nullopt;
    };
    if (look.usedUpAt) situation.usedUpAt[{ProviderID::claude, "session"}] = *at(look.usedUpAt);
    if (look.lasts) situation.lasting.insert({ProviderID::claude, "session"});
    ProviderLimits limits;
    limits.status = look.status;
    limits.fetchedAt = situation.now - minutes(look.age);
    const LimitSource source = look.isStale  ? LimitSource::stale(limits.fetchedAt)
                               : look.isTold ? LimitSource::local(limits.fetchedAt)
                                             : LimitSource::live();
    limits.windows = {{"session", "Session", 1 - look.left, 18'000.0, at(look.resetsAt), source}};
    situation.limits[ProviderID::claude] = limits;
    return situation;
}

TEST(AlertRule, TellsEachThingOnceAndWhenItIsNews) {
    using enum AlertKind;
    const Story stories[]{
        {"each level once, its repetition never, and all again after a reset",
         {{0, 0.5, 300, ""},
          {10, 0.25, 300, "warning"},
          {15, 0.12, 300, ""},
          {20, 0.1, 300, "critical"},
          {25, 0.1, 300, ""},
          {30, 0, 300, "usedUp"},
          {35, 0, 300, ""},
          {299, 0, 300, ""},
          {300, 0, 300, "reset"},
          {305, 1, 600, ""},
          {400, 0.2, 600, "warning"},
          {410, 0.05, 600, "critical"}}},
        {"the gravest of those that begin together", {{0, 0, 300, "usedUp"}, {5, 0.05, 300, ""}}},
        {"not again in the same run, also where the level was left",
         {{0, 0.1, 300, "critical"}, {5, 0.5, 300, ""}, {10, 0.1, 300, ""}}},
        {"without a reset's time, again once the level was left by two points",
         {{0, 0.1, {}, "critical"},
          {5, 0.11, {}, ""},
          {10, 0.1, {}, ""},
          {15, 0.12, {}, ""},
          {20, 0.1, {}, "critical"}}},
        {"a reset that is put off, or worked out anew each time, is no other",
         {{0, 0.1, 300, "critical"}, {5, 0.1, 310, ""}, {301, 0.1, 311, ""}, {302, 0.1, 602, ""}}},
        {"a reset is news only where the limit was critical until then",
         {{0, 0.2, 300, "warning"},
          {301, 1, 600, ""},
          {400, 0.1, 600, "critical"},
          {500, 0.5, 600, ""},
          {601, 1, 900, ""}}},
        {"a reset that is seen late, and with a level that begins, of which one is told",
         {{0, 0.1, 300, "critical"},
          {2000, 0.6, 2200, "reset"},
          {2100, 0.1, 2200, "critical"},
          {2300, 0.2, 2500, "warning"},
          {.minute = 2305, .left = 0.2, .resetsAt = 2500, .told = "", .unwanted = {warning}},
          {2310, 0.1, 2500, "critical"},
          {.minute = 2600, .left = 0.2, .resetsAt = 2800, .told = "reset", .unwanted = {warning}},
          {2605, 0.2, 2800, ""}}},
        {"no old number, and none that an earlier fetch gave",
         {{.minute = 0, .left = 0.1, .told = "", .age = 16},
          {.minute = 5, .left = 0.1, .told = "", .isStale = true},
          {.minute = 10, .left = 0.1, .told = "critical", .age = 14},
          {.minute = 301, .left = 0.1, .told = "", .age = 16},
          {.minute = 302, .left = 0.1, .told = "", .isStale = true},
          {.minute = 310, .left = 1, .resetsAt = 600, .told = "reset"}}},
        {"in quiet hours nothing, afterwards what still holds",
         {{.minute = 0, .left = 0.2, .told = "", .isQuiet = true},
          {.minute = 10, .left = 0.1, .told = "", .isQuiet = true},
          {.minute = 20, .left = 0.1, .told = "critical"},
          {.minute = 310, .left = 1, .resetsAt = 600, .told = "", .isQuiet = true},
          {.minute = 320, .left = 1, .resetsAt = 600, .told = "reset"}}},
        {"what is unwanted counts, so that wanting it later tells nothing old",
         {{.minute = 0, .left = 0.1, .told = "warning", .unwanted = {critical}},
          {.minute = 5, .left = 0.1, .told = ""},
          {.minute = 301, .left = 1, .resetsAt = 600, .told = "reset"}}},
        {"running out within the hour, once, and not what is used up",
         {{.minute = 0, .left = 0.6, .told = "", .usedUpAt = 61},
          {.minute = 2, .left = 0.6, .told = "runsOut", .usedUpAt = 61},
          {.minute = 5, .left = 0.6, .told = "", .isCalm = false},
          {.minute = 6, .left = 0.6, .told = "", .usedUpAt = 80, .isCalm = false},
          {.minute = 7, .left = 0.6, .told = "", .usedUpAt = 83, .isCalm = true},
          {.minute = 8, .left = 0.6, .told = "", .isCalm = true, .lasts = true},
          {.minute = 10, .left = 0.6, .told = "", .usedUpAt = 40, .isCalm = false},
          {.minute = 15, .left = 0.05, .told = "critical", .usedUpAt = 30},
          {.minute = 20, .left = 0, .told = "usedUp", .usedUpAt = 20},
          {.minute = 301, .left = 1, .resetsAt = 600, .told = "reset", .isCalm = true}}},
        {"a login once until it works again, and no answer of yesterday",
         {{.minute = 0, .told = "", .age = 16, .status = ProviderStatus::signInNeeded},
          {.minute = 5, .told = "signIn", .status = ProviderStatus::signInNeeded},
          {.minute = 10, .told = "", .status = ProviderStatus::unreachable},
          {.minute = 12, .told = "", .isTold = true},
          {.minute = 15, .told = "", .status = ProviderStatus::signInNeeded},
          {.minute = 20, .told = ""},
          {.minute = 25, .told = "signIn", .status = ProviderStatus::signInNeeded}}},
    };
    for (const Story& story : stories) {
        ToldAlerts told;
        for (const Look& look : story.looks) {
            const AlertOutcome outcome = considerAlerts(situationOf(look), told);
            std::string said;
            for (const DueAlert& due : outcome.due)
                said += rawValue(due.kind);
            EXPECT_EQ(said, look.told) << story.says << ", minute " << look.minute;
            const bool isCalm = outcome.calm.contains({ProviderID::claude, "session"});
            EXPECT_EQ(isCalm, look.isCalm.value_or(isCalm)) << story.says << look.minute;
            told = outcome.told;
            EXPECT_EQ(considerAlerts(situationOf(look), told).told, told) << "nothing is new";
        }
    }
}

} // namespace
} // namespace tokwatch

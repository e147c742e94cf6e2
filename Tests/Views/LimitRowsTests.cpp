#include "Tokwatch/Views/Popover/LimitRows.h"

#include "Tokwatch/Views/Popover/StatusNotice.h"

#include <gmock/gmock.h>

#include <string>

namespace tokwatch {
namespace {

const Date now = dateFromUnixSeconds(1'773'337'200); // 2026-03-12 17:40

LimitWindow sessionWindow(double used, LimitSource source = LimitSource::live()) {
    return {"session", "Session", used, 18'000.0, now + Seconds{9000}, source};
}

ProviderLimits limitsWith(LimitWindow window, ProviderStatus status = ProviderStatus::ok) {
    ProviderLimits limits;
    limits.plan = "Max";
    limits.windows = {std::move(window)};
    limits.status = status;
    limits.fetchedAt = now;
    return limits;
}

/// Claude's alone.
ProvidersKnown known(const ProviderLimits& limits, const AttemptTimes& attempts = {}) {
    using enum ProviderID;
    return {{claude}, {claude}, {{claude, limits}}, {{claude, attempts}}, {}};
}

ProviderRow rowOf(const ProviderLimits& limits, const AttemptTimes& attempts = {}) {
    return providerRows(known(limits, attempts), now, Calendar::utc()).front();
}

LimitRow windowRow(const LimitWindow& window) {
    return rowOf(limitsWith(window)).windows.front().value<LimitRow>();
}

TEST(LimitRows, LayOutAWindow) {
    const LimitRow row = windowRow(sessionWindow(0.6));
    EXPECT_EQ(row.label, "Session");
    EXPECT_EQ(row.leftText, "40%");
    EXPECT_EQ(row.resetText, "Resets in 2h 30m · 20:10");
    EXPECT_EQ(row.paceCaption, "Using faster than the time elapsed");
    EXPECT_DOUBLE_EQ(row.leftFraction, 0.4);
    EXPECT_DOUBLE_EQ(row.timeLeftFraction, 0.5);
    EXPECT_TRUE(row.isAhead);
    EXPECT_EQ(row.timeText, "This mark is time: 50% of this limit's period is left");
    EXPECT_EQ(row.paceText, "60% used in 50% of the time");
    EXPECT_EQ(row.spoken,
              "Session 40% left. Resets in 2h 30m · 20:10. Using faster than the time elapsed");

    LimitWindow bare = sessionWindow(0.3);
    bare.resetsAt.reset();
    const LimitRow plain = windowRow(bare);
    EXPECT_LT(plain.timeLeftFraction, 0);
    EXPECT_EQ(plain.resetText + plain.paceCaption + plain.paceSymbol + plain.timeText +
                  plain.paceText,
              QString());
    EXPECT_EQ(plain.spoken, "Session 70% left");

    EXPECT_EQ(windowRow(sessionWindow(1)).spoken, "Session 0% left. Resets in 2h 30m · 20:10")
        << "where nothing is left, the pace is over";

    LimitWindow past = sessionWindow(0.9);
    past.resetsAt = now;
    EXPECT_EQ(windowRow(past).resetText, "Has reset");
    EXPECT_EQ(windowRow(past).leftText, "100%");
}

TEST(LimitRows, JudgeByTheThresholds) {
    using enum LimitRow::Level;
    struct Case {
        double used;
        LimitRow::Level level;
    };
    for (const auto& [used, level] :
         {Case{0.5, normal}, Case{0.75, warning}, Case{0.9, critical}, Case{1.4, critical}})
        EXPECT_EQ(windowRow(sessionWindow(used)).level, level) << used;
    EXPECT_EQ(windowRow(sessionWindow(1.4)).leftFraction, 0);
}

TEST(LimitRows, AreDatedWhereTheyAreNotOfTheLatestAnswerAndOldAfterAQuarterOfAnHour) {
    struct Case {
        LimitSource source;
        double fetched; ///< seconds ago
        const char* asOf;
        bool isOld;
    };
    for (const auto& [source, fetched, asOf, isOld] :
         {Case{LimitSource::live(), 900, "", false},
          Case{LimitSource::live(), 1200, "As of 17:20", true},
          Case{LimitSource::stale(now - Seconds{600}), 0, "As of 17:30", false},
          Case{LimitSource::stale(now - Seconds{90'000}), 0, "As of Mar 11, 16:40", true},
          Case{LimitSource::local(now - Seconds{60}), 0, "As of 17:39", false}}) {
        ProviderLimits limits = limitsWith(sessionWindow(0.95, source));
        limits.fetchedAt = now - Seconds{fetched};
        const ProviderRow row = rowOf(limits);
        const auto bar = row.windows[0].value<LimitRow>();
        EXPECT_EQ(row.asOfText, asOf);
        EXPECT_EQ(bar.isOld, isOld) << asOf;
        EXPECT_EQ(bar.level, LimitRow::Level::critical) << "old, and no less low";
    }
}

TEST(LimitRows, LeaveThoseWithoutLimitsToOneLine) {
    using enum ProviderID;
    const ProvidersKnown all{{grok, codex, claude, cursor}, {grok, claude, cursor}, {}, {}, {}};
    const std::vector<ProviderRow> rows = providerRows(all, now, Calendar::utc());
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].notice, "Looking up the limits…");
    QStringList quiet;
    for (const QuietProvider& provider : quietProviders(all))
        quiet.append(provider.text);
    EXPECT_EQ(quiet, (QStringList{"Grok publishes no limits", "Codex was not found",
                                  "Cursor has no usage data yet"}));
}

TEST(LimitRows, SayWhenTheyMayBeAskedForAgain) {
    const ProviderLimits failed = limitsWith(sessionWindow(0.5), ProviderStatus::unreachable);
    EXPECT_EQ(rowOf(failed).tryText, QString());
    AttemptTimes times{now - Seconds{6}, now + Seconds{24}, {}, false};
    EXPECT_EQ(rowOf(failed, times).tryText, "Tried just now · again in 24 s");
    EXPECT_EQ(rowOf(limitsWith(sessionWindow(0.5)), times).tryText, QString()) << "all is well";
    times.isUnderWay = true;
    EXPECT_EQ(rowOf(failed, times).tryText, "Trying…");
    times = {now - Seconds{40}, now - Seconds{10}, {}, false};
    EXPECT_EQ(rowOf(failed, times).tryText, QString());
}

TEST(LimitRows, TellCreditsInTheWordsThatTheNumbersAllow) {
    struct Case {
        Credits credits;
        const char* text;
    };
    for (const auto& [credits, text] :
         {Case{{"", {}, 12.4, 50.0, false}, "$12.40 of $50.00 used"},
          Case{{"", 4.2, {}, {}, false}, "$4.20 left"}, Case{{"", {}, {}, {}, true}, "Unlimited"},
          Case{{"", {}, 3.0, {}, true}, "$3.00 used, no limit"},
          Case{{"", {}, 3.0, {}, false}, "$3.00 used"},
          Case{{"", {}, {}, 50.0, false}, "Limit $50.00"}, Case{{"", {}, {}, {}, false}, ""}})
        EXPECT_EQ(creditsText(credits).toStdString(), text);
}

TEST(StatusNotices, SayWhatHelps) {
    struct Case {
        ProviderID provider;
        ProviderStatus status;
        bool liveLimits;
        ProviderAction::Value action;
        bool isCalm;
        const char* part;
    };
    using enum ProviderStatus;
    const Case cases[]{
        {ProviderID::claude, ok, true, ProviderAction::none, true, "no limits for this plan"},
        {ProviderID::claude, signInNeeded, true, ProviderAction::retry, false,
         "Using Claude Code renews it"},
        {ProviderID::codex, signInNeeded, true, ProviderAction::retry, false,
         "Using Codex renews it"},
        {ProviderID::codex, unreachable, true, ProviderAction::retry, false,
         "could not be reached"},
        {ProviderID::codex, rateLimited, true, ProviderAction::none, true, "by itself"},
        {ProviderID::claude, accessDenied, true, ProviderAction::allowAccess, false, "not allowed"},
        {ProviderID::claude, unavailable, true, ProviderAction::retry, true, "No login was found"},
        {ProviderID::claude, unavailable, false, ProviderAction::turnOnLiveLimits, true,
         "turned off"},
        {ProviderID::codex, unavailable, false, ProviderAction::retry, true, "No login was found"},
    };
    const auto notice = [](const StatusSubject& subject) {
        return statusNotice(subject, now, Calendar::utc());
    };
    for (const Case& each : cases) {
        ProviderLimits limits;
        limits.status = each.status;
        const StatusNotice said =
            notice({each.provider, &limits, {.claudeLiveLimits = each.liveLimits}, {}});
        EXPECT_THAT(said.sentence.toStdString(), ::testing::HasSubstr(each.part));
        EXPECT_EQ(said.action, each.action) << each.part;
        EXPECT_EQ(said.isCalm, each.isCalm) << each.part;
        EXPECT_EQ(said.actionText.isEmpty(), each.action == ProviderAction::none) << each.part;
    }
    ProviderLimits limits = limitsWith(sessionWindow(0.5));
    EXPECT_EQ(notice({ProviderID::claude, &limits, {}, {}}).sentence, QString());
    limits.status = ProviderStatus::rateLimited;
    EXPECT_EQ(notice({ProviderID::claude, &limits, {}, now + Seconds{1200}}).sentence,
              "Claude limits how often Tokwatch may ask. Next try at\u00a018:00.");
    EXPECT_EQ(notice({ProviderID::claude, nullptr, {.mayAsk = false}, {}}).action,
              ProviderAction::finishWelcome);
}

} // namespace
} // namespace tokwatch

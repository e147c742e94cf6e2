#include "LimitRows.h"

#include "StatusNotice.h"

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

ProviderRow rowOf(const ProviderLimits& limits) {
    return providerRows({ProviderID::claude}, {ProviderID::claude}, {{ProviderID::claude, limits}},
                        {}, now, Calendar::utc())
        .front();
}

LimitRow windowRow(const LimitWindow& window) {
    return rowOf(limitsWith(window)).windows.front().value<LimitRow>();
}

TEST(LimitRows, LayOutAWindow) {
    const LimitRow row = windowRow(sessionWindow(0.6));
    EXPECT_EQ(row.label, "Session");
    EXPECT_EQ(row.leftText, "40%");
    EXPECT_EQ(row.resetText, "Resets in 2h 30m");
    EXPECT_EQ(row.paceCaption, "Using faster than the time elapsed");
    EXPECT_DOUBLE_EQ(row.leftFraction, 0.4);
    EXPECT_DOUBLE_EQ(row.timeLeftFraction, 0.5);
    EXPECT_TRUE(row.isAhead);
    EXPECT_EQ(row.spoken, "Session 40% left. Resets in 2h 30m. Using faster than the time elapsed");

    LimitWindow bare = sessionWindow(0.3);
    bare.resetsAt.reset();
    const LimitRow plain = windowRow(bare);
    EXPECT_LT(plain.timeLeftFraction, 0);
    EXPECT_EQ(plain.resetText + plain.paceCaption + plain.paceSymbol, QString());
    EXPECT_EQ(plain.spoken, "Session 70% left");

    LimitWindow past = sessionWindow(0.9);
    past.resetsAt = now;
    EXPECT_EQ(windowRow(past).resetText, "Resets now");
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

TEST(LimitRows, SayWhichNumbersAreOld) {
    const ProviderRow current = rowOf(limitsWith(sessionWindow(0.5)));
    EXPECT_EQ(current.staleText, QString());
    EXPECT_EQ(current.plan, "Max");

    ProviderLimits old = limitsWith(sessionWindow(0.5, LimitSource::stale(now - Seconds{3600})));
    old.windows.push_back(sessionWindow(0.1, LimitSource::stale(now - Seconds{90'000})));
    old.windows.push_back(sessionWindow(0.1));
    old.status = ProviderStatus::unreachable;
    const ProviderRow row = rowOf(old);
    EXPECT_EQ(row.staleText, "As of Mar 11, 16:40");
    EXPECT_TRUE(row.windows[0].value<LimitRow>().isStale);
    EXPECT_FALSE(row.windows[2].value<LimitRow>().isStale);
    EXPECT_EQ(row.notice, "Claude could not be reached.");
}

TEST(LimitRows, ShowThoseWithoutLimitsInOneLine) {
    const std::vector<ProviderRow> rows =
        providerRows({ProviderID::grok, ProviderID::codex, ProviderID::claude},
                     {ProviderID::grok, ProviderID::claude}, {}, {}, now, Calendar::utc());
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].id, "grok");
    EXPECT_TRUE(rows[0].isBrief);
    EXPECT_TRUE(rows[1].isBrief);
    EXPECT_EQ(rows[1].notice, "Not found on this computer");
    EXPECT_FALSE(rows[2].isBrief);
    EXPECT_EQ(rows[2].notice, "Looking up the limits…");
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
        {ProviderID::claude, signInNeeded, true, ProviderAction::retry, false, "Claude Code"},
        {ProviderID::codex, signInNeeded, true, ProviderAction::retry, false, "Sign in with Codex"},
        {ProviderID::codex, unreachable, true, ProviderAction::retry, false,
         "could not be reached"},
        {ProviderID::codex, rateLimited, true, ProviderAction::none, true, "by itself"},
        {ProviderID::claude, accessDenied, true, ProviderAction::allowAccess, false, "not allowed"},
        {ProviderID::claude, unavailable, true, ProviderAction::retry, true, "No login was found"},
        {ProviderID::claude, unavailable, false, ProviderAction::turnOnLiveLimits, true,
         "turned off"},
        {ProviderID::codex, unavailable, false, ProviderAction::retry, true, "No login was found"},
        {ProviderID::grok, unavailable, true, ProviderAction::none, true, "no published limits"},
        {ProviderID::cursor, unavailable, true, ProviderAction::none, true, "no usage data yet"},
    };
    for (const Case& each : cases) {
        ProviderLimits limits;
        limits.status = each.status;
        const StatusNotice notice =
            statusNotice(each.provider, &limits, {.claudeLiveLimits = each.liveLimits});
        EXPECT_THAT(notice.sentence.toStdString(), ::testing::HasSubstr(each.part));
        EXPECT_EQ(notice.action, each.action) << each.part;
        EXPECT_EQ(notice.isCalm, each.isCalm) << each.part;
        EXPECT_EQ(notice.actionText.isEmpty(), each.action == ProviderAction::none) << each.part;
    }
    const ProviderLimits well = limitsWith(sessionWindow(0.5));
    EXPECT_EQ(statusNotice(ProviderID::claude, &well, {}).sentence, QString());
    EXPECT_EQ(statusNotice(ProviderID::claude, nullptr, {.mayAsk = false}).action,
              ProviderAction::finishWelcome);
}

} // namespace
} // namespace tokwatch

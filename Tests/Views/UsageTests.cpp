#include "Tests/Views/ViewWorld.h"
#include "Tokwatch/Display/DayFormat.h"
#include "Tokwatch/Display/LimitTexts.h"
#include "Tokwatch/Views/Popover/PopoverView.h"
#include "Tokwatch/Views/Popover/Usage/LimitRows.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

#include <string>

namespace tokwatch {
namespace {

using enum ProviderID;
using enum ProviderStatus;

const Date now = dateFromUnixSeconds(1'773'337'200); // 2026-03-12 17:40

LimitWindow sessionWindow(double used, LimitSource source = LimitSource::live()) {
    return {"session", "Session", used, 18'000.0, now + Seconds{9000}, source};
}

ProviderLimits limitsWith(LimitWindow window, ProviderStatus status = ok) {
    ProviderLimits limits;
    limits.windows = {std::move(window)};
    limits.status = status;
    limits.fetchedAt = now;
    return limits;
}

ProviderRow rowOf(const ProviderLimits& limits, const AttemptTimes& attempts = {},
                  ProviderID provider = claude, bool liveLimits = true) {
    const ProvidersKnown known{{provider},
                               {provider},
                               {{provider, limits}},
                               {{provider, attempts}},
                               {.claudeLiveLimits = liveLimits}};
    return providerRows(known, now, Calendar::utc()).front();
}

LimitRow windowRow(const LimitWindow& window) {
    return rowOf(limitsWith(window)).windows.front().value<LimitRow>();
}

TEST(LimitRows, LayOutAWindow) {
    const LimitRow row = windowRow(sessionWindow(0.6));
    EXPECT_DOUBLE_EQ(row.leftFraction, 0.4);
    EXPECT_DOUBLE_EQ(row.timeLeftFraction, 0.5);
    EXPECT_TRUE(row.isAhead);
    EXPECT_EQ(row.spoken,
              "Session 40% left. Resets in 2h 30m · 20:10. Using faster than the time elapsed");
    EXPECT_EQ(windowRow(sessionWindow(1)).spoken, "Session 0% left. Resets in 2h 30m · 20:10")
        << "where nothing is left, the pace is over";
    LimitWindow bare = sessionWindow(0.3);
    bare.resetsAt.reset();
    const LimitRow plain = windowRow(bare);
    EXPECT_EQ(plain.spoken + plain.resetText + plain.paceSymbol + plain.timeText,
              "Session 70% left");
    bare.resetsAt = now;
    EXPECT_EQ(windowRow(bare).leftText + windowRow(bare).resetText, "100%Has reset");
}

TEST(LimitRows, TellAndDrawWhenALimitRunsOut) {
    const LimitWindow window = sessionWindow(0.6);
    const std::vector<LimitSample> samples{{now - Seconds{3600}, 0.4, window.resetsAt},
                                           {now - Seconds{1800}, 0.5, window.resetsAt}};
    const ProvidersKnown known{{claude}, {claude}, {{claude, limitsWith(window)}},
                               {},       {},       {{claude, {{"session", samples}}}}};
    const auto row = providerRows(known, now, Calendar::utc()).front().windows[0].value<LimitRow>();
    EXPECT_EQ(row.runOutText, "Runs out about 19:20");
    EXPECT_THAT(row.spoken.toStdString(), ::testing::EndsWith(". Runs out about 19:20"));
    EXPECT_EQ(row.burnUp.beginText + "–" + row.burnUp.endText, "15:10–20:10");
    EXPECT_EQ(row.burnUp.used,
              (QList<QPointF>{{0, 0}, {0.3, 0.4}, {0.4, 0.4}, {0.4, 0.5}, {0.5, 0.5}, {0.5, 0.6}}));
    EXPECT_EQ(row.burnUp.forecast, (QList<QPointF>{{0.5, 0.6}, {5 / 6.0, 1}}));
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
          Case{LimitSource::stale(now - Seconds{90'000}), 0, "As of Mar 11, 16:40", true},
          Case{LimitSource::local(now - Seconds{60}), 0, "As of 17:39", false}}) {
        ProviderLimits limits = limitsWith(sessionWindow(0.95, source));
        limits.fetchedAt = now - Seconds{fetched};
        const ProviderRow row = rowOf(limits);
        const auto bar = row.windows[0].value<LimitRow>();
        EXPECT_EQ(row.asOfText, asOf);
        EXPECT_EQ(bar.isOld, isOld) << asOf;
        EXPECT_EQ(bar.level, Level::Critical) << "old, and no less low";
    }
}

TEST(LimitRows, SayWhenTheyMayBeAskedForAgain) {
    for (const auto& [status, next, isUnderWay, text] :
         {std::tuple{unreachable, 24, false, "Tried just now · again in 24 s"},
          {unreachable, 24, true, "Trying…"},
          {unreachable, -10, false, ""},
          {ok, 24, false, ""}})
        EXPECT_EQ(rowOf(limitsWith(sessionWindow(0.5), status),
                        {now - Seconds{20}, now + Seconds{next}, {}, isUnderWay})
                      .tryText,
                  text);
}

TEST(LimitRows, TellCreditsInTheWordsThatTheNumbersAllow) {
    struct Case {
        Credits credits;
        const char* text;
    };
    for (const auto& [credits, text] :
         {Case{{"", 4.2, {}, {}, false}, "$4.20 left"}, Case{{"", {}, {}, {}, true}, "unlimited"},
          Case{{"", {}, 3.0, {}, true}, "$3.00 used, no limit"},
          Case{{"", {}, 3.0, {}, false}, "$3.00 used"},
          Case{{"", {}, {}, 50.0, false}, "limit $50.00"}, Case{{"", {}, {}, {}, false}, ""}})
        EXPECT_EQ(LimitTexts::credits(credits), text);
}

TEST(LimitRows, SayWhatHelps) {
    using enum ProviderAction::Value;
    struct Case {
        ProviderID provider;
        ProviderStatus status;
        bool liveLimits;
        ProviderAction::Value action;
        bool isCalm;
        const char* part;
    };
    for (const Case& c : {
             Case{claude, ok, true, None, true, "no limits for this plan"},
             {claude, signInNeeded, true, Retry, false, "Using Claude Code renews it"},
             {codex, signInNeeded, true, Retry, false, "Using Codex renews it"},
             {codex, unreachable, true, Retry, false, "could not be reached"},
             {codex, rateLimited, true, None, true, "by itself"},
             {claude, accessDenied, true, AllowAccess, false, "not allowed"},
             {claude, unavailable, false, TurnOnLiveLimits, true, "turned off"},
             {codex, unavailable, false, Retry, true, "No login was found"},
         }) {
        ProviderLimits limits;
        limits.status = c.status;
        const ProviderRow said = rowOf(limits, {}, c.provider, c.liveLimits);
        EXPECT_THAT(said.notice.toStdString(), ::testing::HasSubstr(c.part));
        EXPECT_EQ(said.action, c.action) << c.part;
        EXPECT_EQ(said.noticeIsCalm, c.isCalm) << c.part;
    }
    EXPECT_EQ(
        rowOf(limitsWith(sessionWindow(0.5), rateLimited), {{}, {}, now + Seconds{1200}}).notice,
        "Claude limits how often Tokwatch may ask. Next try at\u00a018:00.");
    EXPECT_EQ(unknownLimitsNotice(claude, true, false).remedy, LimitNotice::Remedy::finishWelcome);
}

/// The popover on a computer that has Claude Code, whose limits are being asked for.
struct PopoverViewTest : ::testing::Test, testing::ViewWorld {
    explicit PopoverViewTest(std::initializer_list<const char*> files = {".claude/projects/readme"})
        : ViewWorld(files) {
        model->start();
        settle();
        finishAllPasses();
    }
    testing::FakeLimitsProvider& source() { return *sources[claude]; }
    void answer(ProviderStatus status) {
        source().answer(status);
        settle();
    }
    std::string updated() { return view.footer()->state().updated.toStdString(); }

    ShownRange range;
    PopoverView view{*model, clock, range};
};

TEST_F(PopoverViewTest, ActsForTheUser) {
    answer(ProviderStatus::unreachable);
    view.usage()->act("claude", ProviderAction::Retry);
    EXPECT_EQ(source().attempts.size(), 1U) << "sooner than a retry may be";
    EXPECT_TRUE(view.countsDown());
    advance(31);
    view.usage()->act("claude", ProviderAction::Retry);
    ASSERT_EQ(source().attempts.size(), 2U);
    answer(ProviderStatus::accessDenied);
    advance(60);
    view.usage()->act("claude", ProviderAction::AllowAccess);
    EXPECT_EQ(source().attempts.size(), 3U);
    preferences->claudeLiveLimits = false;
    view.usage()->act("claude", ProviderAction::TurnOnLiveLimits);
    EXPECT_TRUE(preferences->claudeLiveLimits.peek());
    view.usage()->act("nobody", ProviderAction::Retry);
}

TEST_F(PopoverViewTest, FollowsLimitsSettingsAndTime) {
    ProviderLimits limits = testing::someLimits(time.now());
    limits.windows[0].resetsAt = time.now() + Seconds{7200};
    model->apply(limits, claude);
    settle();
    const auto reset = [this] {
        const ProviderRow row = testing::rowsOf<ProviderRow>(*view.usage()->providers()).front();
        return row.windows.front().value<LimitRow>().resetText;
    };
    EXPECT_EQ(reset(), "Resets in 2h 0m · 14:00");
    pass(Seconds{3600});
    EXPECT_EQ(reset(), "Resets in 1h 0m · 14:00");
    preferences->disabledProviders = {claude, codex};
    settle();
    EXPECT_EQ(view.usage()->providers()->count(), 0);
}

TEST_F(PopoverViewTest, TellsWhatIsUnderWay) {
    answer(ProviderStatus::ok);
    model->refresh();
    settle();
    EXPECT_TRUE(view.footer()->state().isRefreshing);
    indexer.report({codex, 3'000'000, 3'500'000});
    settle();
    EXPECT_FALSE(view.footer()->state().isIndexing) << "over before anybody could read it";
    indexer.report({codex, 30'000'000, 120'000'000});
    settle();
    EXPECT_EQ(view.footer()->state().indexing, "Reading Codex: 30.0 MB of 120.0 MB");
    EXPECT_DOUBLE_EQ(view.footer()->state().indexedFraction, 0.25);
    finishAllPasses();
    EXPECT_EQ(view.footer()->state(), (FooterState{false, {}, 0, false, "Updated just now"}));
    model->apply(testing::someLimits(time.now() - Seconds{7200}), claude);
    settle();
    EXPECT_EQ(updated(), "Updated just now · limits 2 h ago");
}

struct PopoverOfTwoTest : PopoverViewTest {
    PopoverOfTwoTest() : PopoverViewTest({".claude/projects/readme", ".codex/sessions/readme"}) {}
};

TEST_F(PopoverOfTwoTest, SaysThatARefreshCameTooSoonForLimits) {
    sources[codex]->answer(ProviderStatus::rateLimited); // may be asked later
    answer(ProviderStatus::unreachable);
    time.jump(Seconds{6}); // what is shown is older
    view.refresh();
    settle();
    EXPECT_EQ(updated(), "Claude: tried just now · again in 24 s");
    pass(FooterView::noteTime);
    EXPECT_EQ(updated(), "Updated just now");
}

TEST(TimeTexts, SayHowLongAgoAndHowLongStill) {
    for (const auto& [ago, text] : {std::pair{-5.0, "just now"},
                                    {59, "just now"},
                                    {60, "1 min ago"},
                                    {3599, "59 min ago"},
                                    {3600, "1 h ago"},
                                    {86'399, "23 h ago"},
                                    {86'400, "Mar 11, 17:40"}})
        EXPECT_EQ(TimeTexts::age(now - Seconds{ago}, now, Calendar::utc()), text);
    for (const auto& [ahead, text] : {std::pair{0.2, "1 s"}, {59, "59 s"}, {61, "2 min"}})
        EXPECT_EQ(TimeTexts::remaining(now + Seconds{ahead}, now), text);
}

TEST(LimitTexts, SayARunOutAsWellAsItIsKnown) {
    for (const auto& [minutes, text] : {std::pair{62.0, "18:40"},
                                        {93, "19:15"},
                                        {1.2, "17:40"},
                                        {12.5 * 60, "Fri 6:00"},
                                        {3 * 1440, "Sun 18:00"}})
        EXPECT_EQ(LimitTexts::runOut(now + Seconds{minutes * 60}, now, Calendar::utc()),
                  std::string("runs out about ") + text);
    const Date later = now + Seconds{120};
    EXPECT_EQ(LimitTexts::runOut(later, later - Seconds{1}, Calendar::utc()),
              "runs out about 17:42")
        << "17:40 is over";
}

TEST(DayFormat, NamesMomentsAsBrieflyAsTheyAreNear) {
    for (const auto& [ahead, text] :
         {std::pair{0, "17:40"}, {-63'480, "0:02"}, {-64'800, "Mar 11, 23:40"}})
        EXPECT_EQ(DayFormat::moment(now + Seconds{ahead}, now, Calendar::utc()), text);
    for (const auto& [ahead, text] : {std::pair{59.9, "17:41"},
                                      {6.5 * 3600, "Fri 0:10"},
                                      {6 * 86'400, "Wed 17:40"},
                                      {7 * 86'400, "Mar 19, 17:40"}})
        EXPECT_EQ(DayFormat::coming(now + Seconds{ahead}, now, Calendar::utc()), text);
}

} // namespace
} // namespace tokwatch

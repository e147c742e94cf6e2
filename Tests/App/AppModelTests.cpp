#include "Tokwatch/App/AppModel.h"

#include "Tests/App/ModelWorld.h"
#include "Tests/Support/CapturedLog.h"
#include "TokwatchCore/Store/SQLite.h"

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;
using testing::someLimits;

constexpr double day = 86'400;

class AppModelTest : public ::testing::Test, protected testing::ModelWorld {
  protected:
    AppModelTest() {
        home.write(".claude/projects/p/a.jsonl", "");
        makeModel();
    }
    ~AppModelTest() override {
        model.reset();
        testing::settle();
    }

    /// Past the first pass and the one that follows the start of the watch, with nothing to do.
    void startUp() {
        model->start();
        settle();
        finishAllPasses();
        publishes = 0;
    }
    void change(const std::vector<std::string>& paths) {
        watch.onChange(paths);
        settle();
    }
    void behindTheStore(const char* sql) const {
        sqlite::Connection((data / "usage.sqlite").string()).execute(sql);
    }
    testing::FakeLimitsProvider& claude() { return *sources[ProviderID::claude]; }
};

TEST_F(AppModelTest, ShowsWhatIsStoredBeforeItReadsAnything) {
    model->start();
    EXPECT_THAT(model->present(), ElementsAre(ProviderID::claude));
    settle();
    EXPECT_EQ(publishes, 1);
    EXPECT_EQ(model->summary().days, 30);
    EXPECT_GE(*model->lastUpdated(), time.now());
    EXPECT_TRUE(SnapshotStore(data.path()).read());
    EXPECT_EQ(indexer.passes, 1);
    EXPECT_EQ(claude().attempts.size(), 1U);
}

TEST_F(AppModelTest, WatchesTheRootsAndLooksAroundEveryFiveMinutesAndAfterSleep) {
    model->start();
    settle();
    EXPECT_EQ(watch.started, 0) << "before the first pass";
    finishPass();
    EXPECT_THAT(watch.roots,
                ElementsAre(home / ".claude/projects", home / ".codex/sessions",
                            home / ".codex/archived_sessions", home / ".grok/sessions"))
        << "one that appears is noticed at once";
    EXPECT_EQ(indexer.waiting(), 1U) << "for what was written before the watch began";
    finishAllPasses();
    advance(299);
    EXPECT_EQ(indexer.passes, 2);
    watch.isRunning = false;
    advance(1);
    EXPECT_EQ(indexer.passes, 3);
    finishAllPasses();
    EXPECT_EQ(watch.started, 2) << "one that ended is begun again";
    watch.isRunning = true;
    notifications.resume();
    EXPECT_EQ(indexer.passes, 4);
    finishAllPasses();
    home.write(".codex/sessions/2026/x.jsonl", "");
    change({(home / ".codex/sessions").string()});
    finishAllPasses();
    EXPECT_EQ(watch.started, 3) << "one that appears may be unheard of";
    EXPECT_EQ(watch.ended, 2);
    EXPECT_THAT(model->present(), ElementsAre(ProviderID::claude, ProviderID::codex));
    std::filesystem::rename(home / ".codex/sessions", home / "old");
    home.write(".codex/sessions/2026/x.jsonl", "");
    advance(300);
    finishAllPasses();
    EXPECT_EQ(watch.started, 4) << "another directory in the place of one";
    advance(300);
    finishAllPasses();
    EXPECT_EQ(watch.started, 4);
}

TEST_F(AppModelTest, PublishesTheLimitsServicesResultsWhenTheyDiffer) {
    startUp();
    EXPECT_TRUE(model->attempts().at(ProviderID::claude).isUnderWay);
    const ProviderLimits limits = someLimits(time.now());
    claude().answer(limits);
    settle();
    EXPECT_EQ(model->limits().at(ProviderID::claude), limits);
    EXPECT_FALSE(model->attempts().at(ProviderID::claude).isUnderWay);
    model->apply(limits, ProviderID::claude);
    settle();
    EXPECT_EQ(publishes, 1);
    EXPECT_EQ(SnapshotStore(data.path()).read()->providers.at(0).plan, "Max");
}

TEST_F(AppModelTest, RefreshesLogsAndLimitsUntilTheLastOfOverlappingRefreshesEnds) {
    startUp();
    claude().answer(ProviderStatus::unreachable);
    advance(31);
    const int before = indexer.passes;
    notifications.refresh();
    for (int i = 0; i < 1000; ++i)
        model->refresh();
    settle();
    EXPECT_EQ(claude().attempts.size(), 2U) << "a user's retry, long before the timer's";
    finishAllPasses();
    EXPECT_TRUE(model->isRefreshing());
    claude().answer(ProviderStatus::ok);
    settle();
    finishAllPasses();
    EXPECT_FALSE(model->isRefreshing());
    EXPECT_EQ(indexer.passes, before + 2);
}

TEST_F(AppModelTest, ReadsWhatHasChangedAndEverythingWhereThatIsUnknown) {
    startUp();
    const int before = indexer.passes;
    EXPECT_EQ(indexer.lastScope, std::nullopt);
    change({logPath("notes.txt"), (home / ".claude/projects-old/a.jsonl").string(), "/a.jsonl"});
    EXPECT_EQ(indexer.passes, before) << "no logs, or not below the roots";
    change({logPath("b.jsonl"), logPath("notes.txt")});
    EXPECT_THAT(indexer.lastScope, Optional(ElementsAre(logPath("b.jsonl"))));
    change({logPath("c.jsonl"), logPath("a.jsonl")});
    change({logPath("a.jsonl")});
    finishPass();
    EXPECT_THAT(indexer.lastScope, Optional(ElementsAre(logPath("a.jsonl"), logPath("c.jsonl"))));
    change({logPath("a.jsonl")});
    change({(home / ".claude/projects").string(), logPath("a.jsonl")});
    finishPass();
    EXPECT_EQ(indexer.lastScope, std::nullopt) << "a whole directory may have changed";
    change({logPath("a.jsonl")});
    finishPass();
    EXPECT_THAT(indexer.lastScope, Optional(ElementsAre(logPath("a.jsonl"))));
}

TEST_F(AppModelTest, ShowsProgressAndPublishesProviderByProvider) {
    startUp();
    model->refresh();
    for (const auto& [report, published] : {std::pair{IndexingProgress{ProviderID::claude, 10}, 1},
                                            {IndexingProgress{ProviderID::claude, 20}, 1},
                                            {IndexingProgress{ProviderID::codex, 5}, 2}}) {
        indexer.report(report);
        settle();
        EXPECT_EQ(model->indexing(), report);
        EXPECT_EQ(publishes, published);
    }
    indexer.finish();
    indexer.lastProgress({ProviderID::codex, 50, 100}); // arrives after the end
    settle();
    EXPECT_FALSE(model->indexing());

    publishes = 0;
    holdBackground = true;
    for (int i = 0; i < 20; ++i)
        model->publish();
    settle();
    holdBackground = false;
    settle();
    EXPECT_EQ(publishes, 2) << "the first, and one for all that came meanwhile";
}

TEST_F(AppModelTest, RereadsAProviderOnceAtATimeUnlessTheStoreFails) {
    startUp();
    store->save(FileCursor{logPath("a.jsonl"), 0, 0, {{"provider", "claude"}}});
    behindTheStore("CREATE TRIGGER no_delete BEFORE DELETE ON cursors "
                   "BEGIN SELECT RAISE(ABORT, 'no'); END");
    const testing::CapturedLog log;
    model->reread(ProviderID::claude);
    settle();
    EXPECT_EQ(indexer.waiting(), 0U);
    EXPECT_THAT(model->rereading(), IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("Tokwatch: resetting claude cursors failed: ")));

    behindTheStore("DROP TRIGGER no_delete");
    model->reread(ProviderID::claude);
    model->reread(ProviderID::claude);
    settle();
    EXPECT_FALSE(store->cursor(logPath("a.jsonl")));
    EXPECT_EQ(indexer.waiting(), 1U);
    EXPECT_THAT(model->rereading(), ElementsAre(ProviderID::claude));
    finishPass();
    EXPECT_THAT(model->rereading(), IsEmpty());
}

TEST_F(AppModelTest, PrunesOnceADayAndKeepsNinetyDays) {
    const auto ingest = [this](int daysAgo, const char* key) {
        UsageEvent event{
            ProviderID::claude, "m", "s", key, time.now() - Seconds{daysAgo * day}, {}, {}};
        event.tokens.output = 1;
        store->ingest(std::vector{event}, Calendar::utc());
    };
    ingest(91, "old");
    ingest(90, "kept");
    ingest(0, "newest");
    const auto days = [this] {
        const QFuture<std::optional<UsageSummary>> summary = model->summaryOf(120);
        settle();
        return summary.result()->perDay.size();
    };
    const auto passAfter = [this](double seconds) {
        time.jump(Seconds{seconds});
        change({logPath("a.jsonl")});
        finishAllPasses();
    };
    behindTheStore("CREATE TRIGGER no_delete BEFORE DELETE ON daily "
                   "BEGIN SELECT RAISE(ABORT, 'no'); END");
    const testing::CapturedLog log;
    startUp();
    passAfter(60);
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("Tokwatch: prune failed: "))) << "not each pass";
    EXPECT_FALSE(preferences->lastPruneAt());
    behindTheStore("DROP TRIGGER no_delete");
    // The logs that are there, that were deleted, and that may be on a disk which is not mounted.
    const std::string there = home.write(".claude/projects/there.jsonl", "");
    const std::string elsewhere = (home / ".codex/sessions/elsewhere.jsonl").string();
    for (const std::string& path : {there, logPath("deleted.jsonl"), elsewhere})
        store->save(FileCursor{path, 1, 1, {}});
    passAfter(3600);
    EXPECT_THAT(store->cursorTexts(),
                ::testing::UnorderedElementsAre(::testing::Key(there), ::testing::Key(elsewhere)));
    EXPECT_EQ(days(), 2U);
    ingest(95, "later");
    passAfter(day - 3600);
    EXPECT_EQ(days(), 3U);
    passAfter(365 * day); // a clock that is wrong for an hour
    time.jump(Seconds{-365 * day});
    EXPECT_EQ(days(), 2U) << "ninety days before the last one with usage are kept";
    ingest(95, "latest");
    passAfter(0);
    EXPECT_EQ(days(), 2U) << "what that clock noted keeps nobody from it";
}

TEST_F(AppModelTest, TakesNothingForNewThatCouldNotBeComputed) {
    startUp();
    const std::optional<Date> started = model->lastUpdated();
    time.jump(Seconds{86'400});
    model->popoverOpened();
    settle();
    const std::optional<Date> updated = model->lastUpdated();
    EXPECT_GT(updated, started) << "the new day";
    const std::optional<Snapshot> written = SnapshotStore(data.path()).read();
    behindTheStore("DROP TABLE daily");
    const testing::CapturedLog log;
    model->publish();
    settle();
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("computing the summary failed")));
    EXPECT_EQ(model->lastUpdated(), updated);
    EXPECT_EQ(SnapshotStore(data.path()).read(), written);
}

TEST_F(AppModelTest, LeavesTheWorkToAnotherProcessAndTakesItBack) {
    const auto worked = [this] {
        return indexer.passes + watch.started + static_cast<int>(claude().attempts.size());
    };
    model->start(Role::showing);
    settle();
    notifications.refresh();
    notifications.resume();
    model->popoverOpened();
    preferences->claudeLiveLimits = false;
    preferences->claudeLiveLimits = true;
    advance(600);
    EXPECT_EQ(worked(), 0);
    EXPECT_FALSE(preferences->lastPruneAt() || SnapshotStore(data.path()).read());
    ProviderLimits anothers = someLimits(time.now());
    anothers.windows[0].resetsAt = time.now() + Seconds{9000};
    recordLimits(*store, history);
    store->setLimits(anothers, ProviderID::claude);
    model->lookAtStore(true);
    settle();
    EXPECT_EQ(model->limits().at(ProviderID::claude), anothers);
    EXPECT_EQ(model->samples().at(ProviderID::claude).at("session").size(), 1U);

    model->setRole(Role::working);
    settle();
    finishAllPasses();
    EXPECT_EQ(worked(), 2 + 1 + 1);
    EXPECT_TRUE(SnapshotStore(data.path()).read());
    model->setRole(Role::showing);
    EXPECT_EQ(watch.ended, 1);
    claude().answer(ProviderStatus::ok);
    advance(3600);
    EXPECT_EQ(worked(), 4) << "what was under way ends, and nothing follows";
}

TEST_F(AppModelTest, AsksNobodyBeforeItsUserAgreed) {
    model->start(Role::working, LimitsStart::whenAllowed);
    settle();
    model->refresh();
    model->retry(ProviderID::claude);
    model->popoverOpened();
    notifications.resume();
    preferences->claudeLiveLimits = false;
    preferences->claudeLiveLimits = true;
    home.write(".codex/sessions/readme", "");
    model->updatePresent();
    finishAllPasses();
    advance(3600);
    const auto attempts = [this](ProviderID id) { return sources[id]->attempts.size(); };
    EXPECT_EQ(attempts(ProviderID::claude) + attempts(ProviderID::codex), 0U);
    model->allowLimits();
    model->allowLimits();
    EXPECT_EQ(attempts(ProviderID::claude) + attempts(ProviderID::codex), 2U);
}

TEST_F(AppModelTest, TakesCodexLimitsFromItsLogs) {
    startUp();
    const ProviderLimits local = someLimits(time.now(), 0.25);
    store->setLimits(local, ProviderID::codex);
    change({logPath("a.jsonl")});
    finishPass({1, true});
    EXPECT_EQ(model->limits().at(ProviderID::codex), local);
}

TEST_F(AppModelTest, FollowsThePreferences) {
    home.write(".codex/sessions/x.jsonl", "");
    startUp();
    preferences->disabledProviders = std::set{ProviderID::codex};
    EXPECT_THAT(model->present(), ElementsAre(ProviderID::claude));
    preferences->claudeLiveLimits = false;
    claude().answer(ProviderStatus::ok);
    settle();
    EXPECT_EQ(model->limits().at(ProviderID::claude).status, ProviderStatus::unavailable);
}

TEST_F(AppModelTest, PublishesAnewWhereTheTimeZoneIsAnother) {
    startUp();
    notifications.timeZone();
    settle();
    EXPECT_EQ(publishes, 0) << "timedated tells of more than the zone";
    calendar = *Calendar::named("Asia/Tokyo");
    notifications.timeZone();
    settle();
    EXPECT_EQ(publishes, 1);
    EXPECT_EQ(model->calendar(), calendar);
    EXPECT_EQ(model->summary().windowEnd, calendar.startOfDay(time.now()));
    calendar = *Calendar::named("America/Lima");
    change({logPath("a.jsonl")});
    finishPass();
    EXPECT_EQ(model->calendar(), calendar) << "no signal, but another pass";
}

TEST_F(AppModelTest, LooksAgainWhenUnfinishedFilesAreDue) {
    startUp();
    const std::string a = logPath("a.jsonl");
    const std::string b = logPath("b.jsonl");
    change({a});
    const Date begin = time.now();
    finishPass({0, false, {{a, begin + Seconds{20}}, {b, begin + Seconds{40}}}});
    advance(19.9);
    EXPECT_EQ(indexer.waiting(), 0U);
    advance(0.1);
    EXPECT_THAT(indexer.lastScope, Optional(ElementsAre(a, b)));
    finishPass({1, false, {{b, begin + Seconds{40}}}});
    advance(20);
    EXPECT_THAT(indexer.lastScope, Optional(ElementsAre(b)));
    // The store itself fails: everything is looked at again, without waiting for an event.
    const testing::CapturedLog log;
    indexer.fail("the cursors cannot be read");
    settle();
    EXPECT_THAT(log.lines(), ElementsAre("Tokwatch: indexing failed: the cursors cannot be read"));
    advance(15);
    EXPECT_EQ(indexer.lastScope, std::nullopt);
}

TEST_F(AppModelTest, MayEndWhileEverythingIsUnderWay) {
    startUp();
    claude().answer(ProviderStatus::unreachable);
    settle();
    advance(40);
    holdBackground = true;
    model->refresh();
    model->reread(ProviderID::claude);
    indexer.report({ProviderID::claude, 1, 2});
    change({logPath("a.jsonl")});
    watch.onChange({logPath("a.jsonl")}); // on its way to the main thread
    model.reset();
    notifications.refresh();
    claude().answer(someLimits(time.now()));
    holdBackground = false;
    while (indexer.waiting() > 0)
        finishPass();
    settle();
    EXPECT_EQ(watch.ended, watch.started);
}

} // namespace
} // namespace tokwatch

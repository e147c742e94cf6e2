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

TEST_F(AppModelTest, WatchesTheRootsAfterTheFirstPass) {
    model->start();
    settle();
    EXPECT_EQ(watch.started, 0);
    finishPass();
    EXPECT_EQ(watch.started, 1);
    EXPECT_THAT(watch.roots,
                ElementsAre(home / ".claude/projects", home / ".codex/sessions",
                            home / ".codex/archived_sessions", home / ".grok/sessions"))
        << "one that appears is noticed at once";
    EXPECT_EQ(indexer.waiting(), 1U); // for what was written before the watch began
    finishAllPasses();
    advance(300);
    EXPECT_EQ(watch.started, 1);
    watch.isRunning = false;
    finishAllPasses();
    advance(300);
    EXPECT_EQ(watch.started, 2) << "one that ended is begun again";
}

TEST_F(AppModelTest, PicksUpAnAssistantInstalledLater) {
    startUp();
    home.write(".codex/sessions/2026/x.jsonl", "");
    change({(home / ".codex/sessions").string()});
    finishAllPasses();
    EXPECT_EQ(watch.started, 2) << "it may be a link";
    EXPECT_EQ(watch.ended, 1);
    EXPECT_THAT(model->present(), ElementsAre(ProviderID::claude, ProviderID::codex));
    EXPECT_EQ(sources[ProviderID::codex]->attempts.size(), 1U);
}

TEST_F(AppModelTest, ComputesOnceMoreHoweverOftenItIsAskedMeanwhile) {
    startUp();
    holdBackground = true;
    model->publish();
    model->publish();
    model->publish();
    model->publish();
    settle();
    EXPECT_EQ(publishes, 0);
    holdBackground = false;
    settle();
    EXPECT_EQ(publishes, 2);
    model->publish();
    settle();
    EXPECT_EQ(publishes, 3);
}

TEST_F(AppModelTest, PublishesLimitsOnlyWhenTheyDiffer) {
    startUp();
    const ProviderLimits limits = someLimits(time.now());
    model->apply(limits, ProviderID::claude);
    settle();
    EXPECT_EQ(publishes, 1);
    model->apply(limits, ProviderID::claude);
    settle();
    EXPECT_EQ(publishes, 1);
    EXPECT_EQ(SnapshotStore(data.path()).read()->providers.at(0).plan, "Max");
}

TEST_F(AppModelTest, HandsTheLimitsServicesResultsOn) {
    startUp();
    EXPECT_TRUE(model->attempts().at(ProviderID::claude).isUnderWay);
    claude().answer(someLimits(time.now()));
    settle();
    EXPECT_EQ(model->limits().at(ProviderID::claude), someLimits(time.now()));
    EXPECT_FALSE(model->attempts().at(ProviderID::claude).isUnderWay);
    EXPECT_EQ(publishes, 1);
}

TEST_F(AppModelTest, RefreshesUntilTheLastOfOverlappingRefreshesEnds) {
    startUp();
    claude().answer(ProviderStatus::ok);
    const int before = indexer.passes;
    notifications.refresh();
    EXPECT_TRUE(model->isRefreshing());
    for (int i = 0; i < 1000; ++i)
        model->refresh();
    settle();
    finishPass();
    EXPECT_TRUE(model->isRefreshing());
    finishPass();
    EXPECT_FALSE(model->isRefreshing());
    EXPECT_EQ(indexer.passes, before + 2);
}

TEST_F(AppModelTest, RefreshesTheLimitsToo) {
    startUp();
    claude().answer(ProviderStatus::unreachable);
    advance(31);
    model->refresh();
    settle();
    finishPass();
    EXPECT_EQ(claude().attempts.size(), 2U); // a user's retry, long before the timer's
    EXPECT_TRUE(model->isRefreshing());
    claude().answer(ProviderStatus::ok);
    settle();
    EXPECT_FALSE(model->isRefreshing());
}

TEST_F(AppModelTest, AsksNobodyBeforeItsUserAgreed) {
    home.write(".claude/projects/readme", "");
    makeModel();
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
    EXPECT_EQ(attempts(ProviderID::claude), 1U);
    EXPECT_EQ(attempts(ProviderID::codex), 1U);
}

TEST_F(AppModelTest, TakesCodexLimitsFromItsLogs) {
    startUp();
    const ProviderLimits local = someLimits(time.now(), 0.25);
    store->setLimits(local, ProviderID::codex);
    change({logPath("a.jsonl")});
    finishPass();
    EXPECT_FALSE(model->limits().contains(ProviderID::codex));
    change({logPath("a.jsonl")});
    finishPass({1, true});
    EXPECT_EQ(model->limits().at(ProviderID::codex), local);
}

TEST_F(AppModelTest, MakesAPassOnlyForChangesOfLogs) {
    startUp();
    const int before = indexer.passes;
    change({logPath("notes.txt"), logPath("todo.json")});
    EXPECT_EQ(indexer.passes, before);
    change({logPath("notes.txt"), logPath("a.jsonl")});
    EXPECT_EQ(indexer.passes, before + 1);
    finishPass();
    change({home / ".claude/projects"}); // anything below may have changed
    EXPECT_EQ(indexer.passes, before + 2);
}

TEST_F(AppModelTest, MakesOneFurtherPassForABurstOfChanges) {
    startUp();
    const int before = indexer.passes;
    for (int i = 0; i < 10; ++i)
        change({logPath("a.jsonl")});
    EXPECT_EQ(indexer.passes, before + 1);
    finishAllPasses();
    EXPECT_EQ(indexer.passes, before + 2);
}

TEST_F(AppModelTest, LooksAroundEveryFiveMinutesAndAfterSleep) {
    startUp();
    const int before = indexer.passes;
    advance(299);
    EXPECT_EQ(indexer.passes, before);
    advance(1);
    EXPECT_EQ(indexer.passes, before + 1);
    finishPass();
    notifications.resume();
    EXPECT_EQ(indexer.passes, before + 2);
}

TEST_F(AppModelTest, ShowsProgressAndPublishesProviderByProvider) {
    startUp();
    model->refresh();
    const auto report = [this](ProviderID provider, std::int64_t bytes) {
        indexer.report({provider, bytes, 100});
        settle();
    };
    report(ProviderID::claude, 10);
    EXPECT_EQ(model->indexing(), (IndexingProgress{ProviderID::claude, 10, 100}));
    EXPECT_EQ(publishes, 1);
    report(ProviderID::claude, 20);
    EXPECT_EQ(model->indexing()->bytesRead, 20);
    EXPECT_EQ(publishes, 1);
    report(ProviderID::codex, 5);
    EXPECT_EQ(publishes, 2);
    indexer.report({ProviderID::codex, 50, 100});
    finishPass(); // the last report arrives with the end of its pass
    EXPECT_FALSE(model->indexing());
}

TEST_F(AppModelTest, RereadsAProviderOnceAtATime) {
    startUp();
    FileCursor cursor;
    cursor.path = logPath("a.jsonl");
    cursor.context["provider"] = "claude";
    store->save(cursor);
    model->reread(ProviderID::claude);
    model->reread(ProviderID::claude);
    EXPECT_THAT(model->rereading(), ElementsAre(ProviderID::claude));
    settle();
    EXPECT_FALSE(store->cursor(logPath("a.jsonl")));
    EXPECT_EQ(indexer.waiting(), 1U);
    EXPECT_THAT(model->rereading(), ElementsAre(ProviderID::claude));
    finishPass();
    EXPECT_THAT(model->rereading(), IsEmpty());
}

TEST_F(AppModelTest, GivesARereadUpWhenTheStoreFails) {
    startUp();
    FileCursor cursor;
    cursor.path = logPath("a.jsonl");
    cursor.context["provider"] = "claude";
    store->save(cursor);
    sqlite::Connection((data / "usage.sqlite").string())
        .execute("CREATE TRIGGER no_delete BEFORE DELETE ON cursors "
                 "BEGIN SELECT RAISE(ABORT, 'no'); END");
    const testing::CapturedLog log;
    model->reread(ProviderID::claude);
    settle();
    EXPECT_EQ(indexer.waiting(), 0U);
    EXPECT_THAT(model->rereading(), IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("Tokwatch: resetting claude cursors failed: ")));
}

/// Usage on the day that many days before the present one.
UsageEvent eventBefore(Date now, int days, const std::string& key) {
    UsageEvent event;
    event.model = "m";
    event.dedupKey = key;
    event.timestamp = now - Seconds{days * day};
    event.tokens.output = 1;
    return event;
}

TEST_F(AppModelTest, PrunesOnceADayAndKeepsNinetyDays) {
    const std::vector events{eventBefore(time.now(), 91, "old"),
                             eventBefore(time.now(), 90, "kept"),
                             eventBefore(time.now(), 0, "newest")};
    store->ingest(events, Calendar::utc());
    const auto days = [this] {
        const QFuture<UsageSummary> summary = model->summaryOf(120);
        settle();
        return summary.result().perDay.size();
    };
    startUp();
    EXPECT_EQ(days(), 2U);
    store->ingest(std::vector{eventBefore(time.now(), 95, "later")}, Calendar::utc());
    const auto passAfter = [this](double seconds) {
        time.jump(Seconds{seconds});
        change({logPath("a.jsonl")});
        finishAllPasses();
    };
    passAfter(day - 3600);
    EXPECT_EQ(days(), 3U);
    passAfter(365 * day); // a clock that is wrong for an hour
    time.jump(Seconds{-365 * day});
    EXPECT_EQ(days(), 2U) << "ninety days before the last one with usage are kept";
}

TEST_F(AppModelTest, TakesNothingForNewThatCouldNotBeComputed) {
    startUp();
    const std::optional<Date> updated = model->lastUpdated();
    const std::optional<Snapshot> written = SnapshotStore(data.path()).read();
    sqlite::Connection((data / "usage.sqlite").string()).execute("DROP TABLE daily");
    const testing::CapturedLog log;
    model->publish();
    settle();
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("computing the summary failed")));
    EXPECT_EQ(model->lastUpdated(), updated);
    EXPECT_EQ(SnapshotStore(data.path()).read(), written);
}

TEST_F(AppModelTest, LeavesTheWorkToAnotherProcessAndTakesItBack) {
    const auto isAnythingWritten = [this] { return SnapshotStore(data.path()).read().has_value(); };
    store->setLimits(someLimits(time.now()), ProviderID::claude);
    model->start(Role::showing);
    settle();
    EXPECT_EQ(model->limits().at(ProviderID::claude), someLimits(time.now())) << "as it is stored";
    notifications.refresh();
    notifications.resume();
    model->popoverOpened();
    preferences->claudeLiveLimits = false;
    preferences->claudeLiveLimits = true;
    advance(600);
    EXPECT_EQ(indexer.passes, 0);
    EXPECT_EQ(claude().attempts.size(), 0U);
    EXPECT_EQ(watch.started, 0);
    EXPECT_FALSE(preferences->lastPruneAt());
    EXPECT_FALSE(isAnythingWritten());

    ProviderLimits newer = someLimits(time.now());
    store->setLimits(newer, ProviderID::claude);
    store->ingest(std::vector{eventBefore(time.now(), 0, "another's")}, Calendar::utc());
    model->storeChanged();
    settle();
    EXPECT_EQ(model->limits().at(ProviderID::claude), newer);
    EXPECT_EQ(model->summary().tokens.output, 1);

    model->setRole(Role::working);
    settle();
    finishAllPasses();
    EXPECT_EQ(indexer.passes, 2);
    EXPECT_EQ(claude().attempts.size(), 1U);
    EXPECT_EQ(watch.started, 1);
    EXPECT_TRUE(isAnythingWritten());

    model->setRole(Role::showing);
    EXPECT_EQ(watch.ended, 1);
    claude().answer(ProviderStatus::ok);
    advance(3600);
    EXPECT_EQ(indexer.passes, 2);
    EXPECT_EQ(claude().attempts.size(), 1U) << "what was under way ends, and nothing follows";
}

TEST_F(AppModelTest, TriesToPruneAgainWhenItFailed) {
    store->ingest(
        std::vector{eventBefore(time.now(), 100, "old"), eventBefore(time.now(), 0, "new")},
        Calendar::utc());
    sqlite::Connection other((data / "usage.sqlite").string());
    other.execute("CREATE TRIGGER no_delete BEFORE DELETE ON daily "
                  "BEGIN SELECT RAISE(ABORT, 'no'); END");
    const testing::CapturedLog log;
    startUp();
    EXPECT_THAT(log.lines(), ::testing::Each(HasSubstr("Tokwatch: prune failed: ")));
    EXPECT_FALSE(preferences->lastPruneAt());
    other.execute("DROP TRIGGER no_delete");
    change({logPath("a.jsonl")});
    finishPass();
    EXPECT_GE(preferences->lastPruneAt(), time.now());
}

TEST_F(AppModelTest, FollowsThePreferences) {
    home.write(".codex/sessions/x.jsonl", "");
    startUp();
    claude().answer(ProviderStatus::ok);
    settle();
    preferences->providerOrder =
        std::vector{ProviderID::codex, ProviderID::claude, ProviderID::grok, ProviderID::cursor};
    EXPECT_THAT(model->present(), ElementsAre(ProviderID::codex, ProviderID::claude));
    preferences->disabledProviders = std::set{ProviderID::codex};
    EXPECT_THAT(model->present(), ElementsAre(ProviderID::claude));
    preferences->claudeLiveLimits = false;
    settle();
    EXPECT_EQ(model->limits().at(ProviderID::claude).status, ProviderStatus::unavailable);
}

TEST_F(AppModelTest, RefreshesForThePopoverOnlyWhatIsDue) {
    startUp();
    claude().answer(ProviderStatus::ok);
    settle();
    advance(200);
    model->popoverOpened();
    EXPECT_EQ(claude().attempts.size(), 1U);
}

TEST_F(AppModelTest, ReadsWhatHasChangedAndEverythingWhereThatIsUnknown) {
    startUp();
    EXPECT_EQ(indexer.lastScope, std::nullopt);
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
    change({logPath("a.jsonl")});
    const Date begin = time.now();
    finishPass(
        {0,
         false,
         {{logPath("a.jsonl"), begin + Seconds{20}}, {logPath("b.jsonl"), begin + Seconds{40}}}});
    advance(19.9);
    EXPECT_EQ(indexer.waiting(), 0U);
    advance(0.1);
    EXPECT_THAT(indexer.lastScope, Optional(ElementsAre(logPath("a.jsonl"), logPath("b.jsonl"))));
    finishPass({1, false, {{logPath("b.jsonl"), begin + Seconds{40}}}});
    advance(20);
    EXPECT_THAT(indexer.lastScope, Optional(ElementsAre(logPath("b.jsonl"))));
    // The store itself fails: everything is looked at again, without waiting for an event.
    const testing::CapturedLog log;
    indexer.fail("the cursors cannot be read");
    settle();
    EXPECT_THAT(log.lines(), ElementsAre("Tokwatch: indexing failed: the cursors cannot be read"));
    advance(15);
    EXPECT_EQ(indexer.lastScope, std::nullopt);
    const int passes = indexer.passes;
    finishPass();
    advance(200);
    EXPECT_EQ(indexer.passes, passes);
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
    const auto onChange = [late = watch](const std::vector<std::string>& paths) {
        late.onChange(paths);
    };
    model.reset();
    onChange({logPath("a.jsonl")});
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

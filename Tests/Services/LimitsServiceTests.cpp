#include "Tokwatch/Limits/LimitsService.h"

#include "Tests/Support/EventLoop.h"
#include "Tests/Support/FakeLimitsProvider.h"
#include "Tests/Support/ManualScheduler.h"
#include "Tests/Support/StorageAtOnce.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tokwatch/Limits/AttemptFile.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Store/UsageStore.h"

#include <QSettings>

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::settle;
using ::testing::SizeIs;
using testing::someLimits;

class LimitsServiceTest : public ::testing::Test {
  protected:
    LimitsServiceTest() {
        service.onUpdate = [this](ProviderID id, const ProviderLimits& limits) {
            EXPECT_EQ(id, ProviderID::claude);
            updates.push_back(limits);
        };
    }
    /// No coroutine may wait for ever and keep what it holds.
    ~LimitsServiceTest() override {
        service.onUpdate = {};
        service.onAttempt = {};
        while (claude->underWay() > 0)
            answer(ProviderStatus::unavailable);
    }

    void refresh(bool force = false) {
        service.refresh(ProviderID::claude, force);
        settle();
    }
    void answer(const auto& result) {
        claude->answer(result);
        settle();
    }
    void pass(double seconds) { time.advance(Seconds{seconds}, settle); }
    /// A fetch that ends at once in this way.
    void fetch(ProviderStatus status) {
        refresh(true);
        answer(status);
    }
    int attempts() const { return static_cast<int>(claude->attempts.size()); }

    struct Loop {
        Loop() { testing::needEventLoop(); }
    } loop;
    testing::TemporaryDirectory directory;
    testing::ManualScheduler time;
    std::unique_ptr<QSettings> settings = settingsFile(directory / "settings.conf");
    Preferences preferences{*settings};
    std::shared_ptr<UsageStore> store = std::make_shared<UsageStore>(":memory:");
    std::shared_ptr<AttemptLedger> ledger = std::make_shared<AttemptFile>(directory.path());
    std::shared_ptr<testing::FakeLimitsProvider> claude =
        std::make_shared<testing::FakeLimitsProvider>(ProviderID::claude);
    LimitsService service{{{ProviderID::claude, claude}},
                          testing::storageAtOnce(store, ledger),
                          preferences,
                          time.clock(),
                          time};
    std::vector<ProviderLimits> updates;
};

TEST_F(LimitsServiceTest, BacksOffFromAServiceThatFailsUntilItAnswers) {
    refresh();
    for (const double delay : {600, 1200, 1800, 1800}) {
        answer(ProviderStatus::unreachable);
        const int before = attempts();
        pass(delay - 1);
        EXPECT_EQ(attempts(), before) << delay;
        pass(1);
        EXPECT_EQ(attempts(), before + 1) << delay;
    }
    answer(someLimits(time.now()));
    pass(300);
    EXPECT_EQ(attempts(), 6);
}

TEST_F(LimitsServiceTest, HonoursAUsersRetryAfterThirtySeconds) {
    AttemptTimes told;
    service.onAttempt = [&](ProviderID, const AttemptTimes& times) { told = times; };
    const Date first = time.now();
    fetch(ProviderStatus::rateLimited);
    pass(20);
    refresh(true);
    EXPECT_EQ(attempts(), 1);
    EXPECT_EQ(told, (AttemptTimes{first, first + Seconds{30}, first + Seconds{600}, false}));
    pass(11);
    EXPECT_EQ(service.nextAttempt(ProviderID::claude, true), std::nullopt);
    refresh(true);
    EXPECT_EQ(attempts(), 2);
    EXPECT_TRUE(told.isUnderWay);
}

TEST_F(LimitsServiceTest, SpacesByTheLastStatus) {
    struct Case {
        ProviderStatus status;
        bool force;
        double spacing;
    };
    for (const Case& c : {Case{ProviderStatus::ok, false, 300},
                          {ProviderStatus::ok, true, 300},
                          {ProviderStatus::signInNeeded, false, 300},
                          {ProviderStatus::signInNeeded, true, 30},
                          {ProviderStatus::unavailable, false, 300},
                          {ProviderStatus::accessDenied, true, 30},
                          {ProviderStatus::accessDenied, false, 300},
                          {ProviderStatus::rateLimited, false, 600}}) {
        SCOPED_TRACE(rawValue(c.status));
        pass(4000);
        while (claude->underWay() > 0)
            answer(someLimits(time.now()));
        service.cancel(ProviderID::claude);
        pass(4000);
        fetch(c.status);
        service.cancel(ProviderID::claude);
        const int before = attempts();
        pass(c.spacing - 0.5);
        refresh(c.force);
        service.cancel(ProviderID::claude);
        EXPECT_EQ(attempts(), before);
        pass(0.5);
        refresh(c.force);
        EXPECT_EQ(attempts(), before + 1);
    }
}

TEST_F(LimitsServiceTest, HasOneFetchUnderWayAtATime) {
    refresh();
    pass(10'000);
    refresh(true);
    EXPECT_EQ(claude->mostUnderWay, 1);
}

TEST_F(LimitsServiceTest, LeavesARefusedLoginAloneUntilAsked) {
    fetch(ProviderStatus::accessDenied);
    pass(100'000);
    service.refreshIfDue(std::array{ProviderID::claude});
    settle();
    EXPECT_EQ(attempts(), 1);
    refresh(true);
    EXPECT_EQ(attempts(), 2);
}

TEST_F(LimitsServiceTest, ShowsWhatIsStoredAsStaleWhenAFetchFails) {
    const ProviderLimits good = someLimits(time.now());
    refresh();
    answer(good);
    pass(300);
    answer(ProviderStatus::rateLimited);
    ProviderLimits expected = good.markedStale();
    expected.status = ProviderStatus::rateLimited;
    EXPECT_EQ(updates.back(), expected);
    EXPECT_EQ(store->limits(ProviderID::claude), expected);
    pass(600);
    answer(ProviderStatus::unreachable);
    expected.status = ProviderStatus::unreachable;
    EXPECT_EQ(updates.back(), expected); // as stale as before, not as of the first failure
}

TEST_F(LimitsServiceTest, ShowsTheFailureItselfWhenNothingIsStored) {
    fetch(ProviderStatus::signInNeeded);
    ASSERT_THAT(updates, SizeIs(1));
    EXPECT_EQ(updates[0].status, ProviderStatus::signInNeeded);
    EXPECT_THAT(updates[0].windows, IsEmpty());
}

TEST_F(LimitsServiceTest, ShowsWhatIsStoredAtOnceAtTheStart) {
    const ProviderLimits known = someLimits(time.now() - Seconds{1000});
    store->setLimits(known, ProviderID::claude);
    service.start(std::array{ProviderID::claude, ProviderID::cursor});
    settle();
    EXPECT_THAT(updates, ElementsAre(known.markedStale()));
    EXPECT_EQ(attempts(), 1);
}

TEST_F(LimitsServiceTest, ShowsAsStaleWhatIsNotRecent) {
    const ProviderLimits known = someLimits(time.now());
    refresh();
    answer(known);
    pass(30);
    for (const bool isGate : {true, false}) {
        if (isGate)
            preferences.claudeLiveLimits = false;
        else
            preferences.disabledProviders = std::set{ProviderID::claude};
        service.reconsider();
        preferences.claudeLiveLimits = true;
        preferences.disabledProviders = std::set<ProviderID>();
        service.reconsider();
        service.start(std::array{ProviderID::claude});
        settle();
        EXPECT_EQ(updates.back(), known) << isGate;
        EXPECT_EQ(store->limits(ProviderID::claude), known) << isGate;
    }
    pass(271); // a fetch is under way
    service.start(std::array{ProviderID::claude});
    settle();
    EXPECT_EQ(updates.back(), known.markedStale());
    EXPECT_EQ(attempts(), 2);
}

TEST_F(LimitsServiceTest, TakesClaudeBackWhoseAnswerCameWhileItWasOff) {
    refresh();
    preferences.claudeLiveLimits = false;
    service.reconsider();
    answer(someLimits(time.now()));
    EXPECT_EQ(updates.back().status, ProviderStatus::unavailable);
    preferences.claudeLiveLimits = true;
    service.reconsider();
    settle();
    answer(someLimits(time.now()));
    EXPECT_EQ(updates.back(), someLimits(time.now()));
}

TEST_F(LimitsServiceTest, NeverTouchesClaudeWhileItsLiveLimitsAreOff) {
    const ProviderLimits known = someLimits(time.now());
    store->setLimits(known, ProviderID::claude);
    preferences.claudeLiveLimits = false;
    service.start(std::array{ProviderID::claude});
    refresh(true);
    pass(100'000);
    EXPECT_EQ(attempts(), 0);
    ProviderLimits expected = known.markedStale();
    expected.status = ProviderStatus::unavailable;
    EXPECT_EQ(updates.back(), expected); // the plan and the windows stay to be seen
    EXPECT_EQ(store->limits(ProviderID::claude), expected);
}

TEST_F(LimitsServiceTest, TakesClaudeBackWhenItsLiveLimitsComeOn) {
    refresh();
    answer(someLimits(time.now()));
    preferences.claudeLiveLimits = false;
    service.reconsider();
    EXPECT_EQ(updates.back().status, ProviderStatus::unavailable);
    pass(1000);
    EXPECT_EQ(attempts(), 1);
    preferences.claudeLiveLimits = true;
    service.reconsider();
    settle();
    EXPECT_EQ(attempts(), 2);
}

TEST_F(LimitsServiceTest, DropsTheResultOfAProviderThatWasDisabledMeanwhile) {
    refresh();
    preferences.disabledProviders = std::set{ProviderID::claude};
    service.reconsider();
    answer(someLimits(time.now()));
    EXPECT_THAT(updates, IsEmpty());
    EXPECT_FALSE(store->limits(ProviderID::claude));
    pass(10'000);
    EXPECT_EQ(attempts(), 1);
}

TEST_F(LimitsServiceTest, FetchesAgainAfterTheClockWasSetBack) {
    refresh();
    answer(someLimits(time.now()));
    time.jump(Seconds{-86'400});
    pass(300);
    EXPECT_EQ(attempts(), 2);
    answer(ProviderStatus::unreachable);
    time.jump(Seconds{-86'400 * 365.0});
    pass(600);
    EXPECT_EQ(attempts(), 3);
}

TEST_F(LimitsServiceTest, AsksWithOtherProcessesAsOftenAsOneWould) {
    LimitsService other{
        {{ProviderID::claude, claude}},
        testing::storageAtOnce(store, std::make_shared<AttemptFile>(directory.path())),
        preferences,
        time.clock(),
        time};
    std::vector<ProviderLimits> shown;
    other.onUpdate = [&](ProviderID, const ProviderLimits& limits) { shown.push_back(limits); };
    refresh();
    other.start(std::array{ProviderID::claude});
    pass(10);
    answer(someLimits(time.now()));
    pass(10);
    EXPECT_THAT(shown, ElementsAre(updates.back())) << "the other's answer is not looked at";
    for (int round = 0; round < 9; ++round) {
        pass(300);
        answer(someLimits(time.now()));
    }
    EXPECT_EQ(attempts(), 10);

    pass(300);
    answer(ProviderStatus::rateLimited);
    for (int second = 0; second < 90; ++second) { // a script that asks each second
        pass(1);
        LimitsService command{
            {{ProviderID::claude, claude}},
            testing::storageAtOnce(store, std::make_shared<AttemptFile>(directory.path())),
            preferences,
            time.clock(),
            time};
        command.refresh(ProviderID::claude, true);
        if (claude->underWay() > 0) answer(ProviderStatus::rateLimited);
    }
    EXPECT_EQ(attempts(), 11 + 3);
    EXPECT_EQ(claude->mostUnderWay, 1);
}

TEST_F(LimitsServiceTest, CountsAttemptsWhoseProcessWasKilled) {
    for (int restart = 0; restart < 10; ++restart) {
        LimitsService killed{
            {{ProviderID::claude, claude}},
            testing::storageAtOnce(store, std::make_shared<AttemptFile>(directory.path())),
            preferences,
            time.clock(),
            time};
        killed.start(std::array{ProviderID::claude});
        pass(2);
    }
    EXPECT_EQ(attempts(), 1);
    refresh(true);
    EXPECT_EQ(attempts(), 1);
    pass(10);
    refresh(true);
    EXPECT_EQ(attempts(), 2);
    while (claude->underWay() > 0)
        answer(ProviderStatus::ok);
}

TEST_F(LimitsServiceTest, GivesTheNetworkTimeAfterSleep) {
    refresh();
    answer(someLimits(time.now()));
    const auto sleep = [&] {
        time.jump(Seconds{3600});
        service.resumed();
        settle();
    };
    pass(295);
    sleep();
    pass(14); // the timer fell due in these
    EXPECT_EQ(attempts(), 1);
    pass(1);
    EXPECT_EQ(attempts(), 2);
    answer(ProviderStatus::unreachable);
    EXPECT_EQ(service.attemptTimes(ProviderID::claude).nextFetch, time.now() + Seconds{300});
    pass(61);
    service.refreshIfDue(std::array{ProviderID::claude}, LimitsService::Wish::aLook);
    settle();
    EXPECT_EQ(attempts(), 3);
    answer(ProviderStatus::unreachable); // more than a minute after the sleep
    EXPECT_EQ(service.attemptTimes(ProviderID::claude).nextFetch, time.now() + Seconds{600});

    sleep();
    service.networkIsBack();
    settle();
    EXPECT_EQ(attempts(), 4);
    answer(ProviderStatus::unreachable);
    service.networkIsBack(); // once more
    pass(59);
    EXPECT_EQ(attempts(), 4);
    pass(1);
    EXPECT_EQ(attempts(), 5);
    answer(ProviderStatus::rateLimited); // which is no matter of the network
    service.networkIsBack();
    pass(600);
    EXPECT_EQ(attempts(), 5);
}

TEST(LimitsService, MayEndBeforeItsFetches) {
    testing::needEventLoop();
    const testing::TemporaryDirectory directory;
    testing::ManualScheduler time;
    const std::unique_ptr<QSettings> settings = settingsFile(directory / "settings.conf");
    Preferences preferences(*settings);
    const auto claude = std::make_shared<testing::FakeLimitsProvider>(ProviderID::claude);
    {
        LimitsService service({{ProviderID::claude, claude}},
                              testing::storageAtOnce(std::make_shared<UsageStore>(":memory:")),
                              preferences, time.clock(), time);
        service.refresh(ProviderID::claude, false);
    }
    claude->answer(ProviderStatus::ok);
    settle();
    EXPECT_EQ(time.pending(), 0);
}

} // namespace
} // namespace tokwatch

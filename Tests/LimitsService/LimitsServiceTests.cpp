#include "Tokwatch/Limits/LimitsService.h"

#include "Tests/Support/EventLoop.h"
#include "Tests/Support/FakeLimitsProvider.h"
#include "Tests/Support/ManualScheduler.h"
#include "Tests/Support/StorageAtOnce.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/Testing.h"
#include "Tokwatch/Limits/AttemptFile.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Presentation/ClaudeGate.h"
#include "TokwatchCore/Store/UsageStore.h"

namespace tokwatch::testing {

struct LimitsServiceTest : Test {
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
    /// As another process has it, too.
    LimitsService another() {
        const auto attempts = std::make_shared<AttemptFile>(directory.path());
        return LimitsService{{{ProviderID::claude, claude}},
                             storageAtOnce(store, attempts),
                             preferences,
                             time.clock(),
                             time};
    }
    /// A provider off or on, by Claude's own switch or as any is.
    void turn(bool on, bool isGate) {
        if (isGate)
            preferences.claudeLiveLimits = on;
        else
            preferences.disabledProviders = on ? ProviderSet() : ProviderSet{ProviderID::claude};
        service.reconsider();
        settle();
    }
    int attempts() const { return static_cast<int>(claude->attempts.size()); }

    struct Loop {
        Loop() { needEventLoop(); }
    } loop;
    TemporaryDirectory directory;
    ManualScheduler time;
    Preferences preferences{settingsFile(directory / "settings.conf")};
    std::shared_ptr<UsageStore> store = std::make_shared<UsageStore>(":memory:");
    std::shared_ptr<FakeLimitsProvider> claude = std::make_shared<FakeLimitsProvider>();
    LimitsService service = another();
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

TEST_F(LimitsServiceTest, SpacesByTheLastStatus) {
    using enum ProviderStatus;
    for (const auto& [status, force, spacing] : {std::tuple{ok, false, 300},
                                                 {ok, true, 300},
                                                 {signInNeeded, false, 300},
                                                 {signInNeeded, true, 30},
                                                 {unavailable, false, 300},
                                                 {accessDenied, true, 30},
                                                 {accessDenied, false, 300},
                                                 {rateLimited, false, 600},
                                                 {rateLimited, true, 30}}) {
        SCOPED_TRACE(rawValue(status));
        pass(4000);
        while (claude->underWay() > 0)
            answer(someLimits(time.now()));
        service.cancel(ProviderID::claude);
        pass(4000);
        fetch(status);
        EXPECT_EQ(service.attemptTimes(ProviderID::claude).nextRetry,
                  time.now() + Seconds{status == ok ? 300.0 : 30.0});
        service.cancel(ProviderID::claude);
        const int before = attempts();
        pass(spacing - 0.5);
        refresh(force);
        service.cancel(ProviderID::claude);
        EXPECT_EQ(attempts(), before);
        pass(0.5);
        refresh(force);
        EXPECT_EQ(attempts(), before + 1);
    }
}

TEST_F(LimitsServiceTest, AsksNoMoreOftenWhoeverTurnsAProviderOffAndOn) {
    for (const bool isGate : {false, true}) {
        SCOPED_TRACE(isGate);
        refresh();
        const int asked = attempts();
        turn(false, isGate);
        const std::size_t shown = updates.size();
        answer(someLimits(time.now()));
        EXPECT_EQ(updates.size(), shown);
        turn(true, isGate);
        EXPECT_TRUE(!isGate || updates.back() == someLimits(time.now())) << "it was asked before";
        EXPECT_EQ(attempts(), asked);
        pass(300);
        for (int round = 0; round < 60; ++round) { // against a server that has had enough
            turn(false, isGate);
            while (claude->underWay() > 0)
                answer(ProviderStatus::rateLimited);
            turn(true, isGate);
            pass(10);
        }
        EXPECT_EQ(attempts(), asked + 2);
        answer(ProviderStatus::ok);
        pass(300);
    }
}

TEST_F(LimitsServiceTest, AsksNobodyWhereTheSettingsCannotBeRead) {
    const std::filesystem::path file = directory / "unread.conf";
    std::filesystem::create_directory(file);
    Preferences unknown(settingsFile(file));
    LimitsService careful{
        {{ProviderID::claude, claude}}, storageAtOnce(store), unknown, time.clock(), time};
    careful.start(std::array{ProviderID::claude});
    careful.refresh(ProviderID::claude, true);
    careful.networkIsBack();
    pass(4000);
    EXPECT_EQ(attempts(), 0);
    std::filesystem::remove(file);
    directory.write("unread.conf", "[General]\nshowDockIcon=true\n");
    unknown.reload();
    careful.reconsider();
    settle();
    EXPECT_EQ(attempts(), 1);
}

TEST_F(LimitsServiceTest, LeavesARefusedLoginAloneUntilAsked) {
    fetch(ProviderStatus::accessDenied);
    EXPECT_EQ(updates.back().status, ProviderStatus::accessDenied);
    pass(10);
    LimitsService restarted = another();
    restarted.start(std::array{ProviderID::claude});
    pass(289);
    EXPECT_EQ(attempts(), 1);
    pass(1);
    EXPECT_EQ(attempts(), 2) << "what another process was refused says nothing of this one";
    answer(ProviderStatus::accessDenied);
    pass(100'000);
    for (LimitsService* each : {&service, &restarted}) {
        each->refreshIfDue(std::array{ProviderID::claude});
        each->networkIsBack();
        each->reconsider();
    }
    settle();
    EXPECT_EQ(attempts(), 2);
    refresh(true);
    EXPECT_EQ(attempts(), 3);
}

TEST_F(LimitsServiceTest, AsksOnceMoreAtMostWhenTheClockJumps) {
    refresh();
    answer(someLimits(time.now()));
    for (const double seconds : {10 * 86'400.0, -10 * 86'400.0, 1.0, -86'400.0, 1.0}) {
        time.jump(Seconds{seconds});
        refresh(true);
        while (claude->underWay() > 0)
            answer(someLimits(time.now()));
    }
    EXPECT_EQ(attempts(), 2);
    pass(300);
    EXPECT_EQ(attempts(), 3) << "nobody waits for the moment to come again";
}

TEST_F(LimitsServiceTest, ShowsWhatIsStoredAsStaleUnlessItIsRecent) {
    const ProviderLimits good = someLimits(time.now());
    refresh();
    answer(good);
    for (const bool isGate : {true, false}) {
        turn(false, isGate);
        turn(true, isGate);
        service.start(std::array{ProviderID::claude});
        settle();
        EXPECT_EQ(updates.back(), good) << isGate;
    }
    pass(301);
    service.start(std::array{ProviderID::claude, ProviderID::cursor});
    settle();
    ProviderLimits expected = good.markedStale();
    EXPECT_EQ(updates.back(), expected);
    for (const ProviderStatus failure :
         {ProviderStatus::rateLimited, ProviderStatus::unreachable}) {
        answer(failure);
        expected.status = failure;
        EXPECT_EQ(updates.back(), expected) << "as stale as before, not as of the first failure";
        EXPECT_EQ(store->limits(ProviderID::claude), expected);
        pass(600);
    }
    ProviderLimits told = someLimits(time.now());
    told.windows[0].source = LimitSource::local(time.now());
    refresh(true);
    store->setLimits(told, ProviderID::claude);
    for (int failure = 0; failure < 2; ++failure) {
        answer(ProviderStatus::unavailable);
        EXPECT_EQ(updates.back(), told.markedStale()) << "what the logs told needs no login";
        pass(300);
    }
    // Numbers that were stored before, as they are or beside a failure, while the logs told newer.
    for (const ProviderStatus status : {ProviderStatus::unreachable, ProviderStatus::ok}) {
        ProviderLimits earlier = told;
        earlier.status = status;
        pass(600);
        told = someLimits(time.now(), 0.9);
        store->setLimits(told, ProviderID::claude);
        answer(earlier);
        EXPECT_EQ(updates.back(), told);
        EXPECT_EQ(store->limits(ProviderID::claude), told);
    }
}

TEST_F(LimitsServiceTest, NeverTouchesClaudeWhileItsLiveLimitsAreOffAndTakesItBack) {
    const ProviderLimits known = someLimits(time.now());
    store->setLimits(known, ProviderID::claude);
    preferences.claudeLiveLimits = false;
    service.start(std::array{ProviderID::claude});
    refresh(true);
    pass(100'000);
    EXPECT_EQ(attempts(), 0);
    ProviderLimits expected = known.markedStale();
    expected.status = ProviderStatus::unavailable;
    EXPECT_EQ(updates.back(), expected) << "the plan and the windows stay to be seen";
    EXPECT_EQ(ClaudeGate::applied({{ProviderID::claude, known}}, false, time.now()),
              (LimitsByProvider{{ProviderID::claude, expected}}));
    EXPECT_EQ(store->limits(ProviderID::claude), known) << "for whoever turns it on again";

    preferences.claudeLiveLimits = true;
    service.reconsider();
    settle();
    EXPECT_EQ(updates.back(), known.markedStale());
    answer(someLimits(time.now()));
    EXPECT_EQ(updates.back(), someLimits(time.now()));
}

TEST_F(LimitsServiceTest, CountsAttemptsWhoseProcessWasKilled) {
    for (int restart = 0; restart < 10; ++restart) {
        LimitsService killed = another();
        killed.start(std::array{ProviderID::claude});
        pass(2);
    }
    refresh(true);
    EXPECT_EQ(attempts(), 1);
    pass(10);
    refresh(true);
    EXPECT_EQ(attempts(), 2);
}

TEST_F(LimitsServiceTest, AsksWithOtherProcessesAsOftenAsOneWould) {
    LimitsService other = another();
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
        LimitsService command = another();
        command.refresh(ProviderID::claude, true);
        if (claude->underWay() > 0) answer(ProviderStatus::rateLimited);
    }
    EXPECT_EQ(attempts(), 11 + 3);
    EXPECT_EQ(claude->mostUnderWay, 1);
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
    pass(61); // more than a minute after the sleep
    service.refreshIfDue(std::array{ProviderID::claude}, LimitsService::Wish::aLook);
    settle();
    answer(ProviderStatus::unreachable);
    EXPECT_EQ(service.attemptTimes(ProviderID::claude).nextFetch, time.now() + Seconds{600});
    EXPECT_EQ(attempts(), 3);

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
}

} // namespace tokwatch::testing

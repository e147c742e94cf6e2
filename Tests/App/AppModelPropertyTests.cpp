#include "Tests/App/ModelWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace tokwatch {
namespace {

constexpr double hour = 3600;
constexpr double twoDays = 48 * hour;

/// The rules of spacing, told a second time and simply: what an attempt must have waited for.
struct Expectation {
    std::optional<double> lastAttempt; ///< on the wall clock
    std::optional<ProviderStatus> lastStatus;
    double delay = 300;
    std::size_t attempts = 0;

    static bool failsForNow(ProviderStatus status) {
        return status == ProviderStatus::unreachable || status == ProviderStatus::rateLimited;
    }
    double spacing(bool byUser) const {
        if (!lastStatus || *lastStatus == ProviderStatus::ok) return 300;
        if (byUser) return 30;
        return failsForNow(*lastStatus) ? delay : 300;
    }
    void end(ProviderStatus status) {
        lastStatus = status;
        delay = failsForNow(status) ? std::min(2 * delay, 1800.0) : 300;
    }
};

/// Two days of a life with everything that goes wrong in it. After every step the invariants are
/// looked at; which steps come is the seed's doing alone.
class Days : protected testing::ModelWorld {
  public:
    explicit Days(unsigned seed) : random(seed) {
        snapshotDirectory.reset();
        store = std::make_shared<UsageStore>(":memory:");
        limitsService.emplace(providers, testing::storageAtOnce(store), *preferences, time.clock(),
                              time);
        home.write(".claude/projects/a.jsonl", "");
        home.write(".codex/sessions/a.jsonl", "");
        home.write(".grok/sessions/s/usage.json", "{}");
        makeModel();
    }

    void live() {
        model->start();
        check(false);
        double lived = 0;
        while (lived < twoDays && !::testing::Test::HasFailure()) {
            lived += step();
            check(false);
            if (chance(0.01)) {
                quietHours();
                lived += 2 * hour;
            }
        }
        EXPECT_GT(attemptsInAll, 100U);
    }

  private:
    bool chance(double probability) { return std::bernoulli_distribution(probability)(random); }
    double between(double low, double high) {
        return std::uniform_real_distribution(low, high)(random);
    }
    auto any(const auto& all) {
        return all[std::uniform_int_distribution<std::size_t>(0, all.size() - 1)(random)];
    }

    /// One thing that happens; the seconds that it took.
    double step() {
        const int what = std::uniform_int_distribution(0, 11)(random);
        if (what == 0) time.jump(Seconds{between(-72 * hour, 72 * hour)});
        if (what == 1) time.jump(Seconds{between(-400, 400)});
        if (what == 2) flip();
        if (what == 3) model->refresh();
        if (what == 4) model->popoverOpened();
        if (what == 5) model->reread(any(allCases<ProviderID>));
        settle();
        check(what == 3);
        if (what == 6 || what == 7) finishAllPasses();
        if (what == 8 || what == 9) answerAll();
        if (what < 10) return 0;
        const double seconds = chance(0.5) ? between(0, 60) : between(60, 900);
        passTime(seconds);
        return seconds;
    }

    /// Lets time pass in the steps of the timers, so that each attempt is seen at its moment.
    void passTime(double seconds) {
        time.advance(Seconds{seconds}, [this] {
            settle();
            check(false);
        });
    }

    void flip() {
        if (chance(0.5)) {
            preferences->claudeLiveLimits = !preferences->claudeLiveLimits.value();
        } else {
            std::set<ProviderID> disabled;
            for (const ProviderID id : allCases<ProviderID>)
                if (chance(0.2)) disabled.insert(id);
            preferences->disabledProviders = disabled;
        }
        settle();
    }

    void answerAll() {
        for (const auto& [id, source] : sources) {
            if (source->underWay() == 0) continue;
            const ProviderStatus status =
                chance(0.4) ? ProviderStatus::ok : any(allCases<ProviderStatus>);
            expected[id].end(status);
            if (status == ProviderStatus::ok)
                source->answer(testing::someLimits(time.now(), between(0, 1)));
            else
                source->answer(status);
            settle();
        }
    }

    /// Nobody does anything and every service answers: whoever may be fetched is fetched.
    void quietHours() {
        answerAll();
        finishAllPasses();
        std::map<ProviderID, std::size_t> before;
        for (const auto& [id, source] : sources)
            before[id] = source->attempts.size();
        for (int i = 0; i < 4; ++i) {
            passTime(hour / 2);
            finishAllPasses();
            answerAll();
        }
        for (const ProviderID id : model->present()) {
            if (isActive(id) && expected[id].lastStatus != ProviderStatus::accessDenied) {
                EXPECT_GT(sources[id]->attempts.size(), before[id]) << rawValue(id) << " froze";
            }
        }
    }

    bool isActive(ProviderID id) const {
        const std::vector<ProviderID> enabled = preferences->enabledProviders();
        return std::ranges::count(enabled, id) > 0 &&
               (id != ProviderID::claude || preferences->claudeLiveLimits.value());
    }

    void check(bool byUser) {
        for (const auto& [id, source] : sources) {
            EXPECT_LE(source->mostUnderWay, 1U) << rawValue(id);
            Expectation& expectation = expected[id];
            for (; expectation.attempts < source->attempts.size(); ++expectation.attempts) {
                const double moment = unixSeconds(source->attempts[expectation.attempts]);
                EXPECT_TRUE(isActive(id)) << rawValue(id);
                if (expectation.lastAttempt) {
                    EXPECT_GE(moment - *expectation.lastAttempt, expectation.spacing(byUser) - 1e-3)
                        << rawValue(id);
                }
                expectation.lastAttempt = moment;
                ++attemptsInAll;
            }
            // The clock was set back, and nobody can tell how long ago that was: as if just now.
            if (expectation.lastAttempt)
                expectation.lastAttempt =
                    std::min(*expectation.lastAttempt, unixSeconds(time.now()));
        }
    }

    std::mt19937 random;
    std::map<ProviderID, Expectation> expected;
    std::size_t attemptsInAll = 0;
};

class AppModelProperty : public ::testing::TestWithParam<unsigned> {};

TEST_P(AppModelProperty, KeepsItsRulesForTwoDaysWhateverHappens) {
    Days(GetParam()).live();
}

INSTANTIATE_TEST_SUITE_P(Seeds, AppModelProperty, ::testing::Range(1U, 7U));

} // namespace
} // namespace tokwatch

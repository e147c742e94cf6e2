#include "TokwatchCore/Presentation/Forecast.h"

#include "Tests/Support/Testing.h"

namespace tokwatch::testing {

const Date now = dateFromUnixSeconds(1'768'000'000);
constexpr double fiveHours = 18'000;

Date in(double minutes) {
    return now + Seconds{minutes * 60};
}

/// A window of five hours, of which so many minutes are left.
LimitWindow window(double used, double minutesLeft = 180,
                   LimitSource source = LimitSource::live()) {
    return {"session", "Session", used, fiveHours, in(minutesLeft), source};
}

/// So many minutes ago, of the window that `window` describes unless its reset is another.
LimitSample sample(double minutesAgo, double used, double minutesLeft = 180) {
    return {in(-minutesAgo), used, in(minutesLeft)};
}

using Samples = std::vector<LimitSample>;

TEST(BurnUp, HoldsTheRunningWindowAlone) {
    struct Case {
        const char* what;
        Samples samples;
        std::vector<double> used; ///< of all points
    };
    for (const auto& [what, samples, used] :
         {Case{"from its start", {sample(60, 0.2), sample(30, 0.3)}, {0, 0.2, 0.3, 0.5}},
          Case{"resets a minute apart",
               {sample(60, 0.2, 179), sample(30, 0.3, 181)},
               {0, 0.2, 0.3, 0.5}},
          Case{"an earlier window", {sample(60, 0.2, -50), sample(30, 0.3)}, {0, 0.3, 0.5}},
          Case{"a number that fell",
               {sample(60, 0.6), sample(40, 0.1), sample(30, 0.3)},
               {0.1, 0.3, 0.5}},
          Case{"a clock that was ahead", {sample(60, 0.2), sample(-30, 0.9)}, {0, 0.2, 0.5}},
          Case{"another reset, and nothing since", {sample(30, 0.3, 100)}, {}},
          Case{"no samples", {}, {}}}) {
        const std::optional<BurnUp> course = burnUp(window(0.5), now, samples, now);
        ASSERT_EQ(course.has_value(), !used.empty()) << what;
        if (!course) continue;
        std::vector<double> found;
        for (const BurnUp::Point& point : course->points)
            found.push_back(point.usedFraction);
        EXPECT_EQ(found, used) << what;
        EXPECT_EQ(course->begin, in(-120)) << what;
    }
}

TEST(BurnUp, IsOfNothingThatIsNotOfNow) {
    const Samples samples{sample(60, 0.2), sample(30, 0.3)};
    EXPECT_FALSE(burnUp(window(0.5, 180, LimitSource::stale(now)), now, samples, now));
    EXPECT_FALSE(burnUp(window(0.5), in(-16), samples, now)) << "old";
    EXPECT_FALSE(burnUp(window(0.5, 0), now, samples, now)) << "has reset";
    LimitWindow endless = window(0.5);
    endless.resetsAt.reset();
    EXPECT_FALSE(burnUp(endless, now, samples, now));
    LimitWindow ofUnknownLength = window(0.5, 180, LimitSource::local(in(-5)));
    ofUnknownLength.duration.reset();
    EXPECT_EQ(burnUp(ofUnknownLength, now, samples, now)->begin, in(-60));
}

TEST(Forecast, GoesOnAsTheWindowDidOnAverage) {
    struct Case {
        const char* what;
        LimitWindow window;
        Samples samples;
        std::optional<Date> usedUpAt;
    };
    const Samples two{sample(60, 0.2), sample(30, 0.3)};
    for (const auto& [what, window, samples, usedUpAt] :
         {Case{"half in 120 minutes", window(0.5), two, in(120)},
          Case{"lasts", window(0.39), two, std::nullopt},
          Case{"on pace, as the caption has it", window(0.44), two, std::nullopt},
          Case{"just about", window(0.46), two, in(120 / 0.46 * 0.54)},
          Case{"two observations", window(0.5), {sample(60, 0.2)}, std::nullopt},
          Case{"19 minutes", window(0.5), {sample(19, 0.2), sample(9, 0.4)}, std::nullopt},
          Case{"all gone", window(1), two, std::nullopt},
          Case{"since it fell",
               window(0.5),
               {sample(90, 0.9), sample(60, 0.2), sample(30, 0.3)},
               in(100)},
          Case{"a number of ten minutes ago that is over by now",
               window(0.98, 180, LimitSource::local(in(-10))), two, now}}) {
        const std::optional<BurnUp> course = burnUp(window, now, samples, now);
        const std::optional<Forecast> said = course ? forecast(*course, now) : std::nullopt;
        const std::optional<Date> moment = said ? said->usedUpAt : std::nullopt;
        ASSERT_EQ(moment.has_value(), usedUpAt.has_value()) << what;
        const Date expected = usedUpAt.value_or(now);
        EXPECT_NEAR(unixSeconds(moment.value_or(now)), unixSeconds(expected), 1) << what;
    }
    EXPECT_NEAR(
        forecast(*burnUp(window(0.2), now, Samples{sample(60, 0.1), sample(30, 0.1)}, now), now)
            ->usedAtReset,
        0.5, 1e-9);
}

} // namespace tokwatch::testing

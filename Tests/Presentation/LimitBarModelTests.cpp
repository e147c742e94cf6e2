#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Presentation/WindowLabel.h"

#include <gmock/gmock.h>

#include <limits>
#include <string>
#include <vector>

namespace tokwatch {
namespace {

using ::testing::ExitedWithCode;

const Date now = dateFromUnixSeconds(1'768'000'000);
constexpr double fiveHours = 18'000;

LimitWindow window(double used, std::optional<double> duration = std::nullopt,
                   std::optional<double> secondsToReset = std::nullopt) {
    LimitWindow window;
    window.usedFraction = used;
    window.duration = duration;
    if (secondsToReset) window.resetsAt = now + Seconds{*secondsToReset};
    return window;
}

TEST(WindowLabel, TellsWhenASessionLastsForDays) {
    struct Case {
        const char* id;
        std::optional<double> duration;
        std::string label;
    };
    for (const Case& c : {Case{"session", {}, "L"},
                          {"session", fiveHours, "L"},
                          {"session", 86'400, "L · 1 day"},
                          {"session", 604'800, "L · 7 days"},
                          {"session", std::numeric_limits<double>::infinity(), "L"},
                          {"weekly", 604'800, "L"}}) {
        LimitWindow shown = window(0, c.duration);
        shown.id = c.id;
        shown.label = "L";
        EXPECT_EQ(windowLabel(shown), c.label);
    }
}

TEST(LimitBarModel, IsFullAgainOnceTheResetHasPassed) {
    for (const double ago : {0.0, -0.001, -1e6}) {
        const LimitBarModel bar(window(0.9, fiveHours, ago), now);
        EXPECT_EQ(bar.leftFraction, 1);
        EXPECT_EQ(bar.timeLeftFraction, std::nullopt);
        EXPECT_EQ(bar.pace, Pace::unknown);
        EXPECT_EQ(bar.percentLeftText, "100%");
        EXPECT_EQ(bar.resetText, "now");
    }
}

TEST(LimitBarModel, CutsThePercentageOff) {
    const std::vector<std::pair<double, const char*>> cases{
        {0.0, "100%"}, {0.375, "62%"}, {0.63, "37%"}, {0.999, "0%"},
        {1.0, "0%"},   {1.25, "-25%"}, {1.005, "0%"}, {0.991, "0%"},
    };
    for (const auto& [used, text] : cases)
        EXPECT_EQ(LimitBarModel(window(used), now).percentLeftText, text) << used;
    for (int used = 0; used <= 100; ++used) {
        const LimitBarModel bar(window(used / 100.0), now);
        EXPECT_EQ(bar.percentLeftText, std::to_string(100 - used) + '%');
        EXPECT_TRUE(isAtOrBelow(bar.leftFraction, (100 - used) / 100.0)) << used;
        EXPECT_FALSE(isAtOrBelow(bar.leftFraction, (99.99 - used) / 100.0)) << used;
    }
}

TEST(LimitBarModel, SaysOnlyWhatIsKnown) {
    const LimitBarModel bare(window(0.25, fiveHours), now);
    EXPECT_EQ(bare.leftFraction, 0.75);
    EXPECT_EQ(bare.timeLeftFraction, std::nullopt);
    EXPECT_EQ(bare.pace, Pace::unknown);
    EXPECT_EQ(bare.resetText, std::nullopt);
    for (const std::optional<double> duration : {std::optional<double>(), {0.0}, {-60.0}}) {
        const LimitBarModel bar(window(0.25, duration, 11'100), now);
        EXPECT_EQ(bar.timeLeftFraction, std::nullopt);
        EXPECT_EQ(bar.pace, Pace::unknown);
        EXPECT_EQ(bar.resetText, "3h 5m");
    }
}

TEST(LimitBarModel, ComparesUseWithTimeElapsed) {
    struct Case {
        double used;
        double timeLeft; ///< of five hours
        Pace pace;
    };
    const std::vector<Case> cases{
        {0.60, 0.6, Pace::over},   {0.46, 0.6, Pace::over},   {0.44, 0.6, Pace::onPace},
        {0.30, 0.6, Pace::onPace}, {0.26, 0.6, Pace::onPace}, {0.24, 0.6, Pace::under},
        {0.0, 0.9, Pace::onPace},  {0.0, 0.8, Pace::under},   {0.04, 1.0, Pace::onPace},
        {0.06, 1.0, Pace::over},   {1.0, 0.01, Pace::onPace}, {1.0, 0.5, Pace::over},
        {0.04, 1.5, Pace::onPace}, // a reset beyond the window's length: nothing has elapsed
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(std::to_string(each.used) + " at " + std::to_string(each.timeLeft));
        const LimitBarModel bar(window(each.used, fiveHours, each.timeLeft * fiveHours), now);
        EXPECT_EQ(bar.pace, each.pace);
        EXPECT_NEAR(bar.timeLeftFraction.value(), std::min(each.timeLeft, 1.0), 1e-6);
    }
}

TEST(LimitBarModel, StopsTheProgramWhenAFractionIsNoNumber) {
    EXPECT_EXIT(LimitBarModel(window(std::numeric_limits<double>::quiet_NaN()), now),
                ExitedWithCode(1), "fatal");
    EXPECT_EXIT(LimitBarModel(window(-1e18), now), ExitedWithCode(1), "fatal");
}

TEST(Pace, IsSilentWhenUnknown) {
    EXPECT_EQ(symbolName(Pace::unknown), "");
    EXPECT_EQ(caption(Pace::unknown), "");
    EXPECT_EQ(caption(Pace::under), "Using less than the time elapsed");
    EXPECT_EQ(symbolName(Pace::under), "gauge.with.dots.needle.33percent");
    EXPECT_EQ(caption(Pace::onPace), "On pace to last until the reset");
    EXPECT_EQ(symbolName(Pace::onPace), "gauge.with.dots.needle.50percent");
    EXPECT_EQ(caption(Pace::over), "Using faster than the time elapsed");
    EXPECT_EQ(symbolName(Pace::over), "chart.line.downtrend.xyaxis");
}

} // namespace
} // namespace tokwatch

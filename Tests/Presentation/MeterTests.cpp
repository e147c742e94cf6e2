#include "Tests/Support/Testing.h"
#include "TokwatchCore/Presentation/LimitBarModel.h"
#include "TokwatchCore/Presentation/MeterFormat.h"
#include "TokwatchCore/Presentation/WindowLabel.h"

#include <clocale>
#include <limits>

namespace tokwatch::testing {

template<typename Value>
using Cases = std::vector<std::pair<Value, const char*>>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(MeterFormat, ShowsMoneyWithCentsAndGroups) {
    const Cases<std::optional<double>> cases{
        {std::nullopt, "—"},        {0.0, "$0.00"},        {1e-12, "<$0.01"},
        {0.004, "<$0.01"},          {0.00999, "<$0.01"},   {0.01, "$0.01"},
        {0.999, "$1.00"},           {9.5, "$9.50"},        {999.994, "$999.99"},
        {999.996, "$1,000.00"},     {1234.5, "$1,234.50"}, {123456.0, "$123,456.00"},
        {1e9, "$1,000,000,000.00"}, {-0.5, "$-0.50"},      {-1234.5, "$-1,234.50"},
        {-123.0, "$-123.00"}};
    // A decimal comma is what a translated toolkit would ask for; where the locale is not
    // installed, "C" stays and the texts hold all the same.
    const std::string before = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "de_DE.UTF-8");
    for (const auto& [usd, text] : cases)
        EXPECT_EQ(MeterFormat::money(usd), text);
    std::setlocale(LC_ALL, before.c_str());
}

TEST(MeterFormat, ShowsTokensWithThreeDigits) {
    using Most = std::numeric_limits<std::int64_t>;
    EXPECT_EQ(MeterFormat::tokens(Most::min()), "-9223372036854775808");
    EXPECT_EQ(MeterFormat::tokens(Most::max()), "9223372037B");
    const Cases<std::int64_t> cases{{-1000, "-1000"},       {0, "0"},
                                    {999, "999"},           {1000, "1.00K"},
                                    {1234, "1.23K"},        {9994, "9.99K"},
                                    {9995, "10.0K"},        {45'600, "45.6K"},
                                    {99'949, "99.9K"},      {99'950, "100K"},
                                    {999'499, "999K"},      {999'500, "1.00M"},
                                    {45'600'000, "45.6M"},  {999'499'999, "999M"},
                                    {999'500'000, "1.00B"}, {999'500'000'000, "1000B"}};
    for (const auto& [count, text] : cases)
        EXPECT_EQ(MeterFormat::tokens(count), text) << count;
}

TEST(MeterFormat, ShowsSharesInPercent) {
    const Cases<double> cases{{-0.5, "0%"},       {0.0, "0%"},     {0.0000001, "<0.1%"},
                              {0.00099, "<0.1%"}, {0.001, "0.1%"}, {0.125, "12.5%"},
                              {0.9996, "100.0%"}, {1.5, "150.0%"}};
    for (const auto& [fraction, text] : cases)
        EXPECT_EQ(MeterFormat::share(fraction), text) << fraction;
}

TEST(MeterFormat, ShowsDurationsInTheirTwoLargestUnits) {
    const Cases<double> cases{{notANumber, "—"},
                              {0.0, "now"},
                              {59.9, "<1m"},
                              {60.0, "1m"},
                              {86'399.0, "23h 59m"},
                              {86'400.0, "1d 0h"},
                              {863'913'600.0, "9999d 0h"},
                              {1e300, "9999d 0h"}};
    for (const auto& [seconds, text] : cases)
        EXPECT_EQ(MeterFormat::duration(seconds), text) << seconds;
}

const Date now = dateFromUnixSeconds(1'768'000'000);
constexpr double fiveHours = 18'000;

LimitWindow window(double used, std::optional<double> duration = std::nullopt,
                   std::optional<double> secondsToReset = std::nullopt) {
    LimitWindow window{"", "", used, duration, {}, {}};
    if (secondsToReset) window.resetsAt = now + Seconds{*secondsToReset};
    return window;
}

TEST(WindowLabel, TellsWhenASessionLastsForDays) {
    const auto label = [](const char* id, std::optional<double> duration) {
        return windowLabel({id, "L", 0, duration, {}, LimitSource::live()});
    };
    EXPECT_EQ(label("session", 86'400), "L · 1 day");
    EXPECT_EQ(label("session", 604'800), "L · 7 days");
    for (const std::optional<double> other : {std::optional<double>(), {fiveHours}, {infinity}})
        EXPECT_EQ(label("session", other), "L");
    EXPECT_EQ(label("weekly", 604'800), "L");
}

TEST(LimitBarModel, SaysOnlyWhatIsKnown) {
    struct Case {
        std::optional<double> duration, secondsToReset;
        std::optional<std::string> resetText;
        double left = 0.75;
    };
    const Case cases[]{{fiveHours, {}, {}},      {{}, 11'100, "3h 5m"},
                       {0, 11'100, "3h 5m"},     {-60, 11'100, "3h 5m"},
                       {fiveHours, 0, "now", 1}, {fiveHours, -1e6, "now", 1}};
    for (const auto& [duration, secondsToReset, resetText, left] : cases) {
        const LimitBarModel bar(window(0.25, duration, secondsToReset), now);
        EXPECT_EQ(bar.leftFraction, left) << "full again once the reset has passed";
        EXPECT_EQ(bar.timeLeftFraction, std::nullopt);
        EXPECT_EQ(bar.pace, Pace::unknown);
        EXPECT_EQ(bar.resetText, resetText);
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

TEST(LimitBarModel, ComparesUseWithTimeElapsed) {
    struct Case {
        double used, timeLeft; ///< the latter of five hours
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

} // namespace tokwatch::testing

#include "TokwatchCore/Presentation/MeterFormat.h"

#include <gmock/gmock.h>

#include <clocale>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace tokwatch {
namespace {

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
        {-123.0, "$-123.00"},
    };
    for (const auto& [usd, text] : cases)
        EXPECT_EQ(MeterFormat::money(usd), text);
}

TEST(MeterFormat, ShowsTokensWithThreeDigits) {
    const Cases<std::int64_t> cases{
        {std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
        {-1000, "-1000"},
        {0, "0"},
        {999, "999"},
        {1000, "1.00K"},
        {1234, "1.23K"},
        {9994, "9.99K"},
        {9995, "10.0K"},
        {45'600, "45.6K"},
        {99'949, "99.9K"},
        {99'950, "100K"},
        {999'499, "999K"},
        {999'500, "1.00M"},
        {999'950, "1.00M"},
        {1'000'000, "1.00M"},
        {45'600'000, "45.6M"},
        {999'499'999, "999M"},
        {999'500'000, "1.00B"},
        {1'500'000'000, "1.50B"},
        {312'000'000'000, "312B"},
        {999'500'000'000, "1000B"}, // there is no larger unit
        {std::numeric_limits<std::int64_t>::max(), "9223372037B"},
    };
    for (const auto& [count, text] : cases)
        EXPECT_EQ(MeterFormat::tokens(count), text) << count;
}

TEST(MeterFormat, ShowsSharesInPercent) {
    const Cases<double> cases{
        {-0.5, "0%"},       {0.0, "0%"},     {0.0000001, "<0.1%"},
        {0.00099, "<0.1%"}, {0.001, "0.1%"}, {0.125, "12.5%"},
        {0.9996, "100.0%"}, {1.0, "100.0%"}, {1.5, "150.0%"},
    };
    for (const auto& [fraction, text] : cases)
        EXPECT_EQ(MeterFormat::share(fraction), text) << fraction;
}

TEST(MeterFormat, ShowsDurationsInTheirTwoLargestUnits) {
    const Cases<double> cases{
        {notANumber, "—"},
        {infinity, "—"},
        {-infinity, "—"},
        {-5.0, "now"},
        {0.0, "now"},
        {0.5, "<1m"},
        {59.9, "<1m"},
        {60.0, "1m"},
        {2520.0, "42m"},
        {3599.9, "59m"},
        {3600.0, "1h 0m"},
        {11'100.0, "3h 5m"},
        {86'399.0, "23h 59m"},
        {86'400.0, "1d 0h"},
        {198'000.0, "2d 7h"},
        {259'200.0, "3d 0h"},
        {863'913'599.0, "9998d 23h"},
        {863'913'600.0, "9999d 0h"},
        {1e300, "9999d 0h"},
    };
    for (const auto& [seconds, text] : cases)
        EXPECT_EQ(MeterFormat::duration(seconds), text) << seconds;
}

TEST(MeterFormat, IgnoresTheUsersLocale) {
    // A decimal comma is what a translated toolkit would ask for; where the locale is not
    // installed, "C" stays and the texts hold all the same.
    const std::string before = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "de_DE.UTF-8");
    EXPECT_EQ(MeterFormat::money(1234.5), "$1,234.50");
    EXPECT_EQ(MeterFormat::tokens(1234), "1.23K");
    EXPECT_EQ(MeterFormat::share(0.125), "12.5%");
    std::setlocale(LC_ALL, before.c_str());
}

} // namespace
} // namespace tokwatch

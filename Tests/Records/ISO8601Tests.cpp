#include "TokwatchCore/Support/ISO8601.h"

#include <gtest/gtest.h>

namespace tokwatch {
namespace {

TEST(ISO8601, ReadsInternetDateTimes) {
    struct Case {
        const char* text;
        double seconds;
    };
    for (const Case& c : {
             Case{"1970-01-01T00:00:00Z", 0},
             {"2025-06-01T12:34:56Z", 1748781296},
             {"2025-06-01T12:34:56.789Z", 1748781296.789},
             {"2025-06-01T12:34:56.1Z", 1748781296.1},
             {"2025-06-01T12:34:56.123456789Z", 1748781296.123456789},
             {"2025-06-01T14:34:56+02:00", 1748781296},
             {"2025-06-01T04:04:56.5-08:30", 1748781296.5},
             {"2024-02-29T00:00:00Z", 1709164800},
             {"2016-12-31T23:59:60Z", 1483228800},
             {"1969-12-31T23:59:59Z", -1},
         }) {
        const std::optional<Date> date = parseISO8601(c.text);
        ASSERT_TRUE(date.has_value()) << c.text;
        EXPECT_DOUBLE_EQ(unixSeconds(*date), c.seconds) << c.text;
    }
}

TEST(ISO8601, RefusesEverythingElse) {
    for (const char* text :
         {"", "tomorrow", "2025-06-01", "2025-06-01 12:34:56", "2025-06-01T12:34:56",
          "2025-06-01T12:34Z", "2025-06-01T12:34:56.Z", "2025-06-01T12:34:56.1234567890Z",
          "2025-13-01T00:00:00Z", "2025-02-29T00:00:00Z", "2025-06-01T24:00:00Z",
          "2025-06-01T12:60:00Z", "2025-06-01T12:34:56Zjunk", " 2025-06-01T12:34:56Z",
          "2025-06-01T12:34:56+2:00", "2025-06-01T12:34:56+25:00", "+025-06-01T12:34:56Z",
          "2025-6-01T12:34:56Z"})
        EXPECT_FALSE(parseISO8601(text).has_value()) << text;
}

TEST(ISO8601, WritesWholeSecondsRoundedDown) {
    EXPECT_EQ(formatISO8601(dateFromUnixSeconds(1748781296.999)), "2025-06-01T12:34:56Z");
    EXPECT_EQ(formatISO8601(dateFromUnixSeconds(-0.5)), "1969-12-31T23:59:59Z");
    EXPECT_EQ(formatISO8601(dateFromUnixSeconds(1e300)), "9999-12-31T23:59:59Z");
    EXPECT_EQ(formatISO8601(dateFromUnixSeconds(-1e300)), "0000-01-01T00:00:00Z");
}

} // namespace
} // namespace tokwatch

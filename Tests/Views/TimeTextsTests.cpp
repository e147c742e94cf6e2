#include "TimeTexts.h"

#include <gtest/gtest.h>

namespace tokwatch {
namespace {

TEST(TimeTexts, SayHowLongAgo) {
    struct Case {
        double secondsAgo;
        const char* text;
    };
    const Calendar calendar = Calendar::utc();
    const Date now = dateFromUnixSeconds(1'773'337'200); // 2026-03-12 17:40
    for (const auto& [secondsAgo, text] :
         {Case{-5, "Updated just now"}, Case{59, "Updated just now"}, Case{60, "Updated 1 min ago"},
          Case{3599, "Updated 59 min ago"}, Case{3600, "Updated 1 h ago"},
          Case{86'399, "Updated 23 h ago"}, Case{86'400, "Updated Mar 11, 17:40"}})
        EXPECT_EQ(TimeTexts::updated(now - Seconds{secondsAgo}, now, calendar).toStdString(), text);
    EXPECT_EQ(TimeTexts::updated({}, now, calendar), QString());
    EXPECT_EQ(TimeTexts::moment(now - Seconds{17 * 3600 + 38 * 60}, now, calendar), "0:02");
    EXPECT_EQ(TimeTexts::moment(now - Seconds{18 * 3600}, now, calendar), "Mar 11, 23:40");
}

} // namespace
} // namespace tokwatch

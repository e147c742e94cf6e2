#include "Tokwatch/Views/Common/TimeTexts.h"

#include "Tokwatch/Display/DayFormat.h"

#include <gtest/gtest.h>

namespace tokwatch {
namespace {

const Calendar calendar = Calendar::utc();
const Date now = dateFromUnixSeconds(1'773'337'200); // Thursday, 2026-03-12 17:40

struct Case {
    double seconds;
    const char* text;
};

TEST(TimeTexts, SayHowLongAgoAndHowLongStill) {
    for (const auto& [ago, text] :
         {Case{-5, "just now"}, Case{59, "just now"}, Case{60, "1 min ago"},
          Case{3599, "59 min ago"}, Case{3600, "1 h ago"}, Case{86'399, "23 h ago"},
          Case{86'400, "Mar 11, 17:40"}})
        EXPECT_EQ(TimeTexts::age(now - Seconds{ago}, now, calendar).toStdString(), text);
    for (const auto& [ahead, text] : {Case{0.2, "1 s"}, Case{59, "59 s"}, Case{61, "2 min"}})
        EXPECT_EQ(TimeTexts::remaining(now + Seconds{ahead}, now).toStdString(), text);
}

TEST(DayFormat, NamesMomentsAsBrieflyAsTheyAreNear) {
    for (const auto& [ahead, text] :
         {Case{0, "17:40"}, Case{-17 * 3600 - 38 * 60, "0:02"}, Case{-18 * 3600, "Mar 11, 23:40"}})
        EXPECT_EQ(DayFormat::moment(now + Seconds{ahead}, now, calendar), text);
    for (const auto& [ahead, text] :
         {Case{59.9, "17:41"}, Case{6.5 * 3600, "Fri 0:10"}, Case{6 * 86'400, "Wed 17:40"},
          Case{7 * 86'400, "Mar 19, 17:40"}})
        EXPECT_EQ(DayFormat::coming(now + Seconds{ahead}, now, calendar), text);
}

} // namespace
} // namespace tokwatch

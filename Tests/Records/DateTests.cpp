#include "Tests/Support/CapturedLog.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/Testing.h"
#include "TokwatchCore/Support/Calendar.h"
#include "TokwatchCore/Support/ISO8601.h"
#include "TokwatchCore/Support/LocalZone.h"

namespace tokwatch::testing {

Date at(const char* text) {
    return parseISO8601(text).value();
}

TEST(Calendar, PutsMomentsOnTheDayOfTheirZone) {
    for (const auto& [zone, moment, day] :
         {std::tuple{"UTC", "2026-01-31T23:59:59.999Z", "2026-01-31"},
          {"Europe/Berlin", "2026-01-31T22:59:59Z", "2026-01-31"},
          {"Europe/Berlin", "2026-01-31T23:00:00Z", "2026-02-01"},
          {"America/Los_Angeles", "2026-03-08T07:59:59Z", "2026-03-07"},
          {"America/Los_Angeles", "2026-03-09T06:59:59Z", "2026-03-08"}, // 23 hours long
          {"America/Los_Angeles", "2026-11-02T07:59:59Z", "2026-11-01"}, // 25 hours long
          {"Pacific/Apia", "2011-12-30T09:59:59Z", "2011-12-29"},        // the day after never was
          {"America/Sao_Paulo", "2018-11-04T02:59:59Z", "2018-11-03"},
          {"America/Sao_Paulo", "2018-11-04T03:00:00Z", "2018-11-04"}}) {
        const Calendar calendar = Calendar::named(zone).value();
        EXPECT_EQ(calendar.dayKey(at(moment)), day) << zone << " " << moment;
        EXPECT_EQ(calendar.dayHolding(at(moment)).key, day) << zone << " " << moment;
        EXPECT_EQ(calendar.dayKey(calendar.startOfDay(at(moment))), day);
    }
}

TEST(Calendar, CountsDaysNotHours) {
    const Calendar berlin = Calendar::named("Europe/Berlin").value();
    EXPECT_EQ(berlin.addingDays(at("2026-03-28T12:00:00Z"), 1), at("2026-03-29T11:00:00Z"));
    EXPECT_EQ(berlin.addingDays(at("2026-03-30T11:00:00Z"), -90), at("2025-12-30T12:00:00Z"));
}

TEST(Calendar, ClaimsNoMomentOfAnotherDayAroundAMidnightThatCameTwice) {
    // Clocks went back from 00:01 to 23:01, so the first minute of the day came an hour before the
    // day went on.
    const Calendar calendar = Calendar::named("America/St_Johns").value();
    const Date change = at("2008-11-02T02:31:00Z");
    EXPECT_EQ(calendar.startOfDay(at("2008-11-02T15:00:00Z")), at("2008-11-02T02:30:00Z"))
        << "at the first of them";
    const Calendar::Day day = calendar.dayHolding(change + Seconds{4 * 3600});
    for (int minute = -120; minute < 120; ++minute) {
        const Date moment = change + Seconds{minute * 60.0};
        if (day.start <= moment && moment < day.end) {
            EXPECT_EQ(calendar.dayKey(moment), day.key) << minute;
        }
    }
}

TEST(LocalZone, FollowsAReplacedZoneFileButNotTheVariablesOwnZone) {
    const std::filesystem::path zones = "/usr/share/zoneinfo";
    const TemporaryDirectory etc;
    const std::filesystem::path file = etc / "localtime";
    CapturedLog log;
    LocalZone local(std::nullopt, file);
    const auto dayThen = [&local] { return local.calendar().dayKey(at("2026-03-10T23:30:00Z")); };
    EXPECT_EQ(dayThen(), "2026-03-10") << "no file is UTC";
    for (const auto& [zone, day] : {std::pair{"Asia/Tokyo", "2026-03-11"},
                                    {"America/Lima", "2026-03-10"},
                                    {"Europe/Berlin", "2026-03-11"}}) {
        std::filesystem::remove(file);
        std::filesystem::create_symlink(zones / zone, file); // as timedated does it
        EXPECT_EQ(dayThen(), day) << zone;
        EXPECT_EQ(local.calendar().zoneName(), zone);
        std::filesystem::remove(file);
        std::filesystem::copy_file(zones / zone, file); // as an image has it
        EXPECT_EQ(dayThen(), day) << zone;
    }
    etc.write("localtime", "no zone");
    EXPECT_EQ(dayThen(), "2026-03-10");
    EXPECT_EQ(dayThen(), "2026-03-10");
    EXPECT_EQ(log.lines().size(), 1U) << "told once";
    EXPECT_EQ(LocalZone(":Asia/Tokyo", file).calendar().zoneName(), "Asia/Tokyo");
    EXPECT_EQ(LocalZone("Mars/Olympus_Mons", file).calendar(), Calendar::utc());
}

TEST(ISO8601, ReadsInternetDateTimes) {
    for (const auto& [text, seconds] :
         {std::pair{"1970-01-01T00:00:00Z", 0.0},
          {"2025-06-01T12:34:56Z", 1748781296},
          {"2025-06-01T12:34:56.789Z", 1748781296.789},
          {"2025-06-01T12:34:56.1Z", 1748781296.1},
          {"2025-06-01T12:34:56.123456789Z", 1748781296.123456789},
          {"2025-06-01T12:34:56.78900000000000000001Z", 1748781296.789},
          {"2025-06-01T14:34:56+02:00", 1748781296},
          {"2025-06-01T04:04:56.5-08:30", 1748781296.5},
          {"2024-02-29T00:00:00Z", 1709164800},
          {"2016-12-31T23:59:60Z", 1483228800},
          {"1969-12-31T23:59:59Z", -1}}) {
        EXPECT_DOUBLE_EQ(unixSeconds(at(text)), seconds) << text;
    }
}

TEST(ISO8601, RefusesEverythingElse) {
    for (const char* text :
         {"", "tomorrow", "2025-06-01", "2025-06-01 12:34:56", "2025-06-01T12:34:56",
          "2025-06-01T12:34Z", "2025-06-01T12:34:56.Z", "2025-13-01T00:00:00Z",
          "2025-02-29T00:00:00Z", "2025-06-01T24:00:00Z", "2025-06-01T12:60:00Z",
          "2025-06-01T12:34:56Zjunk", " 2025-06-01T12:34:56Z", "2025-06-01T12:34:56+2:00",
          "2025-06-01T12:34:56+25:00", "+025-06-01T12:34:56Z", "2025-6-01T12:34:56Z"})
        EXPECT_FALSE(parseISO8601(text).has_value()) << text;
}

TEST(ISO8601, WritesWholeSecondsRoundedDown) {
    for (const auto& [seconds, text] : {std::pair{1748781296.999, "2025-06-01T12:34:56Z"},
                                        {-0.5, "1969-12-31T23:59:59Z"},
                                        {1e300, "9999-12-31T23:59:59Z"},
                                        {-1e300, "0000-01-01T00:00:00Z"}})
        EXPECT_EQ(formatISO8601(dateFromUnixSeconds(seconds)), text);
}

} // namespace tokwatch::testing

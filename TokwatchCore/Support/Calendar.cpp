#include "TokwatchCore/Support/Calendar.h"

#include "TokwatchCore/Support/LocalZone.h"

#include <absl/time/civil_time.h>
#include <absl/time/time.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace tokwatch {

struct Calendar::Zone {
    absl::TimeZone timeZone;
};

namespace {

absl::Time absoluteTime(Date date) {
    return absl::UnixEpoch() + absl::Seconds(unixSeconds(date));
}

Date fromAbsoluteTime(absl::Time time) {
    return dateFromUnixSeconds(absl::ToDoubleSeconds(time - absl::UnixEpoch()));
}

/// The first moment of a civil day. Where the clock jumps over midnight the day begins at the jump;
/// where midnight comes twice the first one counts.
Date firstMoment(absl::CivilDay day, absl::TimeZone zone) {
    const absl::TimeZone::TimeInfo info = zone.At(absl::CivilSecond(day));
    return fromAbsoluteTime(info.kind == absl::TimeZone::TimeInfo::SKIPPED ? info.trans : info.pre);
}

std::string keyOf(absl::CivilDay day) {
    char text[32];
    const int length = std::snprintf(text, sizeof text, "%04d-%02d-%02d",
                                     static_cast<int>(day.year()), day.month(), day.day());
    return std::string(text, static_cast<std::size_t>(length));
}

/// Read once, by whoever asks first, which is at the start.
std::optional<std::string> zoneVariable() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment by then.
    const char* named = std::getenv("TZ");
    return named == nullptr ? std::nullopt : std::optional<std::string>(named);
}

} // namespace

Calendar::Calendar(std::shared_ptr<const Zone> z) : zone(std::move(z)) {}

Calendar Calendar::current() {
    static LocalZone local(zoneVariable(), "/etc/localtime");
    return local.calendar();
}

Calendar Calendar::utc() {
    return Calendar(std::make_shared<const Zone>(Zone{absl::UTCTimeZone()}));
}

std::optional<Calendar> Calendar::named(const std::string& name) {
    absl::TimeZone found;
    if (!absl::LoadTimeZone(name, &found)) return std::nullopt;
    return Calendar(std::make_shared<const Zone>(Zone{found}));
}

std::string Calendar::dayKey(Date date) const {
    return keyOf(absl::ToCivilDay(absoluteTime(date), zone->timeZone));
}

Date Calendar::startOfDay(Date date) const {
    return firstMoment(absl::ToCivilDay(absoluteTime(date), zone->timeZone), zone->timeZone);
}

Date Calendar::addingDays(Date date, int days) const {
    const absl::CivilSecond civil = absl::ToCivilSecond(absoluteTime(date), zone->timeZone);
    const absl::CivilDay target = absl::CivilDay(civil) + days;
    const absl::CivilSecond moved(target.year(), target.month(), target.day(), civil.hour(),
                                  civil.minute(), civil.second());
    const absl::TimeZone::TimeInfo info = zone->timeZone.At(moved);
    return fromAbsoluteTime(info.kind == absl::TimeZone::TimeInfo::SKIPPED ? info.trans : info.pre);
}

std::vector<Date> Calendar::daysEnding(Date now, int count) const {
    const absl::CivilDay today = absl::ToCivilDay(absoluteTime(now), zone->timeZone);
    std::vector<Date> days;
    for (int offset = 1 - count; offset <= 0; ++offset) {
        // A zone that crossed the date line has a calendar day that never was; it is left out.
        const Date start = firstMoment(today + offset, zone->timeZone);
        if (absl::ToCivilDay(absoluteTime(start), zone->timeZone) == today + offset)
            days.push_back(start);
    }
    return days;
}

Calendar::Fields Calendar::fields(Date date) const {
    const absl::CivilSecond civil = absl::ToCivilSecond(absoluteTime(date), zone->timeZone);
    Fields fields;
    fields.year = static_cast<int>(civil.year());
    fields.month = civil.month();
    fields.day = civil.day();
    fields.hour = civil.hour();
    fields.minute = civil.minute();
    fields.weekday = static_cast<int>(absl::GetWeekday(civil));
    return fields;
}

std::string Calendar::zoneName() const {
    const std::string name = zone->timeZone.name();
    const std::size_t start = name.find_first_not_of('/');
    return start == 0 || start == std::string::npos ? name : name.substr(start - 1);
}

bool operator==(const Calendar& a, const Calendar& b) {
    return a.zone->timeZone == b.zone->timeZone;
}

Calendar::Day Calendar::dayHolding(Date date) const {
    const absl::CivilDay day = absl::ToCivilDay(absoluteTime(date), zone->timeZone);
    // Around a midnight that comes twice, only what lies after the second one and before the next
    // first one is sure to be this day.
    const absl::TimeZone::TimeInfo start = zone->timeZone.At(absl::CivilSecond(day));
    const absl::TimeZone::TimeInfo end = zone->timeZone.At(absl::CivilSecond(day + 1));
    const bool skipped = start.kind == absl::TimeZone::TimeInfo::SKIPPED;
    return {fromAbsoluteTime(skipped ? start.trans : start.post),
            fromAbsoluteTime(end.kind == absl::TimeZone::TimeInfo::SKIPPED ? end.trans : end.pre),
            keyOf(day)};
}

} // namespace tokwatch

#include "Tokwatch/Display/DayFormat.h"

#include <array>
#include <cmath>
#include <string_view>

namespace tokwatch {
namespace {

constexpr std::array<std::string_view, 7> weekdays{"Monday", "Tuesday",  "Wednesday", "Thursday",
                                                   "Friday", "Saturday", "Sunday"};
constexpr std::array<std::string_view, 12> months{"January",   "February", "March",    "April",
                                                  "May",       "June",     "July",     "August",
                                                  "September", "October",  "November", "December"};

std::string_view weekday(const Calendar::Fields& fields) {
    return weekdays[static_cast<std::size_t>(fields.weekday)];
}

std::string_view monthName(const Calendar::Fields& fields) {
    return months[static_cast<std::size_t>(fields.month - 1)];
}

std::string clockTime(const Calendar::Fields& fields) {
    const std::string minute = std::to_string(fields.minute);
    return std::to_string(fields.hour) + (fields.minute < 10 ? ":0" : ":") + minute;
}

std::string whole(double number) {
    return std::to_string(static_cast<std::int64_t>(number));
}

} // namespace

std::string DayFormat::weekdayAndDay(Date date, const Calendar& calendar) {
    return std::string(weekday(calendar.fields(date)).substr(0, 3)) + ", " + day(date, calendar);
}

std::string DayFormat::day(Date date, const Calendar& calendar) {
    const Calendar::Fields fields = calendar.fields(date);
    return std::string(monthName(fields).substr(0, 3)) + " " + std::to_string(fields.day);
}

std::string DayFormat::month(Date date, const Calendar& calendar) {
    const Calendar::Fields fields = calendar.fields(date);
    return std::string(monthName(fields)) + " " + std::to_string(fields.year);
}

std::string DayFormat::clock(Date date, const Calendar& calendar) {
    return clockTime(calendar.fields(date));
}

std::string DayFormat::moment(Date date, Date now, const Calendar& calendar) {
    const std::string time = clockTime(calendar.fields(date));
    const bool isToday = calendar.dayKey(date) == calendar.dayKey(now);
    return isToday ? time : day(date, calendar) + ", " + time;
}

std::string DayFormat::coming(Date date, Date now, const Calendar& calendar) {
    constexpr Seconds halfAMinute{30};
    const Date minute = date + halfAMinute;
    const std::string key = calendar.dayKey(minute);
    const bool isToday = key == calendar.dayKey(now);
    const bool isThisWeek =
        key > calendar.dayKey(now) && key < calendar.dayKey(calendar.addingDays(now, 7));
    if (isToday || !isThisWeek) return moment(minute, now, calendar);
    const Calendar::Fields fields = calendar.fields(minute);
    return std::string(weekday(fields).substr(0, 3)) + " " + clockTime(fields);
}

std::string DayFormat::spoken(Date date, const Calendar& calendar) {
    const Calendar::Fields fields = calendar.fields(date);
    return std::string(weekday(fields)) + ", " + std::string(monthName(fields)) + " " +
           std::to_string(fields.day) + ", " + std::to_string(fields.year);
}

std::string TimeTexts::age(Date moment, Date now, const Calendar& calendar) {
    const double seconds = Seconds(now - moment).count();
    // A clock that was set back makes the moment lie ahead: that is as good as now.
    if (seconds < 60) return "just now";
    if (seconds < 3600) return whole(seconds / 60) + " min ago";
    if (seconds < 86'400) return whole(seconds / 3600) + " h ago";
    return DayFormat::moment(moment, now, calendar);
}

std::string TimeTexts::updated(std::optional<Date> usage, std::optional<Date> limits, Date now,
                               const Calendar& calendar) {
    return (usage ? "Updated " + age(*usage, now, calendar) : "") +
           (limits ? " · limits " + age(*limits, now, calendar) : "");
}

std::string TimeTexts::remaining(Date moment, Date now) {
    const double seconds = std::ceil(Seconds(moment - now).count());
    return seconds < 60 ? whole(seconds) + " s" : whole(std::ceil(seconds / 60)) + " min";
}

} // namespace tokwatch

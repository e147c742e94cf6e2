#include "Tokwatch/Display/DayFormat.h"

#include <array>
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

} // namespace tokwatch

#include "TokwatchCore/Support/ISO8601.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace tokwatch {
namespace {

/// Reads a text from the front; every step answers whether what it wanted was there.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : rest(text) {}

    bool digits(int count, int& value) {
        if (rest.size() < static_cast<std::size_t>(count)) return false;
        value = 0;
        for (int i = 0; i < count; ++i) {
            const char c = rest[static_cast<std::size_t>(i)];
            if (c < '0' || c > '9') return false;
            value = value * 10 + (c - '0');
        }
        rest.remove_prefix(static_cast<std::size_t>(count));
        return true;
    }

    bool literal(char wanted) {
        if (rest.empty() || rest.front() != wanted) return false;
        rest.remove_prefix(1);
        return true;
    }

    /// The digits after a decimal point as a fraction of a second, to the nanosecond.
    bool fraction(double& value) {
        std::int64_t numerator = 0;
        double denominator = 1;
        int count = 0;
        while (!rest.empty() && rest.front() >= '0' && rest.front() <= '9') {
            if (++count <= 9) {
                numerator = numerator * 10 + (rest.front() - '0');
                denominator *= 10;
            }
            rest.remove_prefix(1);
        }
        value = static_cast<double>(numerator) / denominator;
        return count > 0;
    }

    /// "Z" or "±HH:MM", in seconds east of Greenwich.
    bool zone(int& offset) {
        offset = 0;
        if (literal('Z')) return true;
        const int sign = literal('+') ? 1 : (literal('-') ? -1 : 0);
        int hours = 0;
        int minutes = 0;
        if (sign == 0 || !digits(2, hours)) return false;
        literal(':');
        if (!digits(2, minutes) || hours > 23 || minutes > 59) return false;
        offset = sign * (hours * 3600 + minutes * 60);
        return true;
    }

    bool atEnd() const { return rest.empty(); }

  private:
    std::string_view rest;
};

} // namespace

std::optional<Date> parseISO8601(std::string_view text) {
    Scanner scan(text);
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int offset = 0;
    double fraction = 0;
    const bool wellFormed =
        scan.digits(4, year) && scan.literal('-') && scan.digits(2, month) && scan.literal('-') &&
        scan.digits(2, day) && scan.literal('T') && scan.digits(2, hour) && scan.literal(':') &&
        scan.digits(2, minute) && scan.literal(':') && scan.digits(2, second) &&
        (!scan.literal('.') || scan.fraction(fraction)) && scan.zone(offset) && scan.atEnd();
    const std::chrono::year_month_day date{std::chrono::year{year},
                                           std::chrono::month{static_cast<unsigned>(month)},
                                           std::chrono::day{static_cast<unsigned>(day)}};
    // 60 is a leap second; it counts as the first second of the next minute.
    if (!wellFormed || !date.ok() || hour > 23 || minute > 59 || second > 60) return std::nullopt;
    const std::chrono::sys_seconds whole = std::chrono::sys_days{date} + std::chrono::hours{hour} +
                                           std::chrono::minutes{minute} +
                                           std::chrono::seconds{second - offset};
    return dateFromUnixSeconds(static_cast<double>(whole.time_since_epoch().count()) + fraction);
}

std::string formatISO8601(Date date) {
    // What lies outside the years 0 to 9999 has no such text; a log may claim any number.
    const double bounded = std::clamp(unixSeconds(date), -62'167'219'200.0, 253'402'300'799.0);
    const auto whole = std::chrono::floor<std::chrono::seconds>(dateFromUnixSeconds(bounded));
    const auto day = std::chrono::floor<std::chrono::days>(whole);
    const std::chrono::year_month_day ymd{day};
    const std::chrono::hh_mm_ss time{whole - day};
    char text[64];
    const int length = std::snprintf(
        text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(ymd.year()),
        static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
        static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
        static_cast<int>(time.seconds().count()));
    return std::string(text, static_cast<std::size_t>(length));
}

} // namespace tokwatch

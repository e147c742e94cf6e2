#pragma once

#include "TokwatchCore/Support/Date.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tokwatch {

/// The user's calendar: Gregorian days in one time zone. A cheap value to copy; callable from any
/// thread.
class Calendar {
  public:
    /// The zone that the TZ variable or the system names at this moment (`LocalZone`).
    static Calendar current();
    static Calendar utc();
    /// By tz database name ("Europe/Berlin"); absent when the database has no such zone.
    static std::optional<Calendar> named(const std::string& zone);

    /// "2026-01-31": compares as text in time order.
    std::string dayKey(Date date) const;

    /// The first moment of the day that holds `date`: midnight, or where a clock change skips
    /// midnight the moment of that change.
    Date startOfDay(Date date) const;

    /// `days` calendar days later (earlier when negative), at the same time of day where it exists.
    Date addingDays(Date date, int days) const;

    /// The starts of the `count` days that end with the day of `now`, oldest first.
    std::vector<Date> daysEnding(Date now, int count) const;

    /// The days and hours of `date` as shown to people.
    struct Fields {
        int year = 0;
        int month = 0;   ///< 1…12
        int day = 0;     ///< 1…31
        int hour = 0;    ///< 0…23
        int minute = 0;  ///< 0…59
        int weekday = 0; ///< 0 is Monday
    };
    Fields fields(Date date) const;

    /// The zone's name, for diagnostics.
    std::string zoneName() const;

    /// The key of the day that holds `date`, and a span [start, end) around it that lies in that
    /// day: lets a reader of many events ask the zone once a day instead of once an event. The span
    /// is the whole day but where a clock change makes a midnight come twice; it may even be empty
    /// there.
    struct Day {
        Date start;
        Date end;
        std::string key;
    };
    Day dayHolding(Date date) const;

    /// The same zone.
    friend bool operator==(const Calendar& a, const Calendar& b);

  private:
    struct Zone;
    explicit Calendar(std::shared_ptr<const Zone> zone);
    std::shared_ptr<const Zone> zone;
};

/// Where a component that lives long takes the present calendar from: the user may travel.
using CalendarSource = std::function<Calendar()>;

} // namespace tokwatch

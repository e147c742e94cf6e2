#pragma once

#include <chrono>
#include <functional>

namespace tokwatch {

/// A length of time in seconds with a fraction.
using Seconds = std::chrono::duration<double>;

/// A moment: seconds since 1970-01-01T00:00:00Z with a fraction, in double precision (about 0.2 µs
/// today).
using Date = std::chrono::time_point<std::chrono::system_clock, Seconds>;

/// Where a component takes the present time from. Only `main` hands out the real one.
using Clock = std::function<Date()>;

inline Date dateFromUnixSeconds(double seconds) {
    return Date{Seconds{seconds}};
}

inline double unixSeconds(Date date) {
    return date.time_since_epoch().count();
}

/// The real clock.
inline Date systemNow() {
    return std::chrono::time_point_cast<Seconds>(std::chrono::system_clock::now());
}

} // namespace tokwatch

#include "TokwatchCore/Presentation/MeterFormat.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace tokwatch {
namespace {

/// Decimal digits with "." whatever the locale, halves rounded to even as the nearest double is.
std::string fixed(double value, int fractionDigits) {
    std::array<char, 400> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value,
                                            std::chars_format::fixed, fractionDigits);
    return error == std::errc() ? std::string(text.data(), end) : std::string("—");
}

/// "," between groups of three digits of the whole part.
std::string grouped(std::string number) {
    const std::size_t first = number.starts_with('-') ? 1 : 0;
    std::size_t at = std::min(number.find('.'), number.size());
    while (at > first + 3) {
        at -= 3;
        number.insert(at, ",");
    }
    return number;
}

} // namespace

std::string MeterFormat::money(std::optional<double> usd) {
    if (!usd) return "—";
    if (*usd > 0 && *usd < 0.01) return "<$0.01";
    return "$" + grouped(fixed(*usd, 2));
}

std::string MeterFormat::wholeMoney(double usd) {
    return "$" + grouped(fixed(usd, 0));
}

std::string MeterFormat::tokens(std::int64_t count) {
    if (count <= 999) return std::to_string(count);
    constexpr std::array<double, 3> sizes{1e3, 1e6, 1e9};
    constexpr std::array<char, 3> letters{'K', 'M', 'B'};
    std::size_t unit = count < 1'000'000 ? 0 : (count < 1'000'000'000 ? 1 : 2);
    double value = static_cast<double>(count) / sizes[unit];
    if (unit < 2 && std::round(value) >= 1000) value = static_cast<double>(count) / sizes[++unit];
    const int fractionDigits = value >= 99.95 ? 0 : (value >= 9.995 ? 1 : 2);
    return fixed(value, fractionDigits) + letters[unit];
}

std::string MeterFormat::share(double fraction) {
    const double percent = fraction * 100;
    if (!(percent > 0)) return "0%";
    if (percent < 0.1) return "<0.1%";
    return fixed(percent, 1) + "%";
}

std::string MeterFormat::duration(double seconds) {
    constexpr double most = 863'913'600; // 9999 days
    if (!std::isfinite(seconds)) return "—";
    if (seconds <= 0) return "now";
    if (seconds >= most) return "9999d 0h";
    const auto whole = static_cast<std::int64_t>(seconds);
    const auto pair = [whole](std::int64_t unit, char large, std::int64_t part, char small) {
        return std::to_string(whole / unit) + large + " " + std::to_string(whole % unit / part) +
               small;
    };
    if (whole < 60) return "<1m";
    if (whole < 3600) return std::to_string(whole / 60) + "m";
    if (whole < 86'400) return pair(3600, 'h', 60, 'm');
    return pair(86'400, 'd', 3600, 'h');
}

} // namespace tokwatch

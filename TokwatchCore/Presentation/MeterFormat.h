#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tokwatch {

/// Numbers as every surface shows them. One fixed format, never the user's locale: the texts are
/// the same on every machine.
struct MeterFormat {
    /// "$1,234.50", "<$0.01" for less than a cent, "—" when absent.
    static std::string money(std::optional<double> usd);
    /// "$1,235": whole dollars with grouping.
    static std::string wholeMoney(double usd);
    /// "999", "1.23K", "45.6M", "312B": three significant digits.
    static std::string tokens(std::int64_t count);
    /// "12.5%", "<0.1%", "0%".
    static std::string share(double fraction);
    /// "42m", "3h 5m", "2d 7h", "<1m", "now"; "—" when not finite.
    static std::string duration(double seconds);
};

} // namespace tokwatch

#include "TokwatchCore/Support/Amounts.h"

#include <array>
#include <cstddef>
#include <cstdio>

namespace tokwatch {

std::string formatBytes(std::int64_t bytes) {
    constexpr std::array units{"kB", "MB", "GB", "TB"};
    if (bytes < 1000) return std::to_string(bytes) + " B";
    double value = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    while (value >= 999.95 && unit + 1 < units.size()) {
        value /= 1000;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.1f %s", value, units[unit]);
    return text;
}

std::string counted(std::int64_t count, std::string_view noun) {
    return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

} // namespace tokwatch

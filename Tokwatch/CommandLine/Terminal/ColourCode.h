#pragma once

#include <cstddef>
#include <string_view>

namespace tokwatch {

/// The length of one of `paint`'s codes at the front of the text.
inline std::size_t colourCode(std::string_view text) {
    if (!text.starts_with("\033[")) return 0;
    const std::size_t end = text.find_first_not_of("0123456789", 2);
    return end != std::string_view::npos && text[end] == 'm' ? end + 1 : 0;
}

} // namespace tokwatch

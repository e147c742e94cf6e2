#include "TokwatchCore/Support/PlainText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <functional>

namespace tokwatch {
namespace {

/// A character at the front of a text; `length` bytes, 0 where they are not UTF-8.
struct Character {
    char32_t code = 0;
    std::size_t length = 0;
};

Character firstOf(std::string_view text) {
    const auto byte = [text](std::size_t index) -> unsigned {
        return static_cast<unsigned char>(text[index]);
    };
    if (byte(0) < 0x80) return {byte(0), 1};
    const std::size_t length = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
    if (byte(0) < 0xC2 || byte(0) > 0xF4 || text.size() < length) return {};
    char32_t code = byte(0) & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) return {};
        code = code << 6U | (byte(i) & 0x3FU);
    }
    constexpr std::array<char32_t, 5> least{0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < least[length] || isSurrogate || code > 0x10FFFF) return {};
    return {code, length};
}

bool isControl(char32_t code) {
    return code < 0x20 || (code >= 0x7F && code <= 0x9F)            // C0, C1
           || code == 0x2028 || code == 0x2029                      // line and paragraph separators
           || code == 0x061C || code == 0x200E || code == 0x200F || // marks of direction
           (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

bool isInvalid(Character character) {
    return character.length == 0;
}

bool isInvalidOrControl(Character character) {
    return isInvalid(character) || isControl(character.code);
}

using Replacement = std::function<std::string(Character)>;

std::string replaced(std::string_view text, bool (*isToGo)(Character),
                     const Replacement& replacement) {
    std::string plain;
    plain.reserve(text.size());
    while (!text.empty()) {
        const Character character = firstOf(text);
        const std::size_t length = isInvalid(character) ? 1 : character.length;
        if (isToGo(character))
            plain += replacement(character);
        else
            plain += text.substr(0, length);
        text.remove_prefix(length);
    }
    return plain;
}

} // namespace

std::string plainText(std::string_view text) {
    return replaced(text, isInvalidOrControl, [](Character) { return std::string("?"); });
}

std::string validUTF8(std::string_view text) {
    return replaced(text, isInvalid, [](Character) { return std::string("?"); });
}

bool isFormula(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    constexpr std::array<std::string_view, 8> signs{"=", "+", "-", "@", "＝", "＋", "－", "＠"};
    return std::ranges::any_of(signs,
                               [text](std::string_view sign) { return text.starts_with(sign); });
}

std::string boundedName(std::string name, std::size_t most) {
    std::size_t characters = 0;
    std::size_t last = 0; // where the last character begins for which there is room
    for (std::size_t at = 0; at < name.size(); ++at) {
        if ((static_cast<unsigned char>(name[at]) & 0xC0U) == 0x80U) continue; // amid a character
        if (++characters == most) last = at;
        if (characters > most) return name.substr(0, last) + "…";
    }
    return name;
}

std::string plainJson(std::string document) {
    // The first bytes of what may be meant; nearly no document holds one.
    if (document.find_first_of("\x7F\xC2\xD8\xE2") == std::string::npos) return document;
    return replaced(document, isInvalidOrControl, [](Character character) {
        char escape[16];
        std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(character.code));
        return std::string(escape);
    });
}

} // namespace tokwatch

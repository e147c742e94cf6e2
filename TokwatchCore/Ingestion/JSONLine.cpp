#include "TokwatchCore/Ingestion/JSONLine.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>

namespace tokwatch {
namespace {

using simdjson::SUCCESS;
using simdjson::ondemand::json_type;

/// Deeper nesting than any tool writes; bounds the recursion.
constexpr int maximumDepth = 512;

bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// The escapes of a string's inside. Control characters and UTF-8 have been checked by the parser's
/// first stage.
bool hasValidEscapes(std::string_view inside) {
    std::size_t at = inside.find('\\');
    while (at != std::string_view::npos) {
        if (at + 1 >= inside.size()) return false;
        const char kind = inside[at + 1];
        std::size_t length = 2;
        if (kind == 'u') {
            if (inside.size() - at < 6 ||
                !std::all_of(inside.data() + at + 2, inside.data() + at + 6, isHexDigit))
                return false;
            length = 6;
        } else if (std::strchr("\"\\/bfnrt", kind) == nullptr || kind == '\0') {
            return false;
        }
        at = inside.find('\\', at + length);
    }
    return true;
}

bool isValidNumber(std::string_view text) {
    const auto digits = [&text] {
        const std::size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
        text.remove_prefix(count);
        return count;
    };
    if (text.starts_with('-')) text.remove_prefix(1);
    const bool leadingZero = text.starts_with('0');
    const std::size_t whole = digits();
    if (whole == 0 || (leadingZero && whole > 1)) return false;
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        if (digits() == 0) return false;
    }
    if (text.starts_with('e') || text.starts_with('E')) {
        text.remove_prefix(1);
        if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
        if (digits() == 0) return false;
    }
    return text.empty();
}

/// The text of a scalar as written.
std::string_view token(JSONValue& value) {
    std::string_view text = value.raw_json_token();
    const std::size_t end = text.find_last_not_of(" \t\r\n");
    return text.substr(0, end == std::string_view::npos ? 0 : end + 1);
}

bool isValidString(std::string_view quoted) {
    return quoted.size() >= 2 && quoted.front() == '"' && quoted.back() == '"' &&
           hasValidEscapes(quoted.substr(1, quoted.size() - 2));
}

bool isValidScalar(std::string_view text) {
    if (text.empty()) return false;
    if (text.front() == '"') return isValidString(text);
    return text == "true" || text == "false" || text == "null" || isValidNumber(text);
}

/// Checks a string and moves past it. Left where it is, the parser would take a string in front of
/// a colon for a key, and `"a":"b":1` for a field.
bool consumeString(JSONValue& value) {
    const bool valid = isValidString(token(value));
    simdjson::ondemand::raw_json_string consumed;
    return valid && value.get_raw_json_string().get(consumed) == SUCCESS;
}

bool skipNested(JSONValue value, int depth) {
    json_type type{};
    if (depth > maximumDepth || value.type().get(type) != SUCCESS) return false;
    if (type == json_type::object) {
        simdjson::ondemand::object object;
        return value.get_object().get(object) == SUCCESS &&
               forEachField(object, [depth](std::string_view, JSONValue inner) {
                   return skipNested(inner, depth + 1);
               });
    }
    if (type == json_type::array) {
        simdjson::ondemand::array array;
        return value.get_array().get(array) == SUCCESS &&
               forEachElement(array,
                              [depth](JSONValue inner) { return skipNested(inner, depth + 1); });
    }
    return type == json_type::string ? consumeString(value) : isValidScalar(token(value));
}

/// The token when the value is a valid number; empty otherwise. `valid` tells whether it was valid
/// JSON at all.
std::string_view numberToken(JSONValue& value, bool& valid) {
    json_type type{};
    valid = value.type().get(type) == SUCCESS;
    if (!valid) return {};
    if (type != json_type::number) {
        valid = skip(value);
        return {};
    }
    const std::string_view text = token(value);
    valid = isValidNumber(text);
    return valid ? text : std::string_view();
}

struct Whole {
    std::int64_t number = 0; ///< the fraction cut off
    bool hasFraction = false;
};

/// By how many places an exponent moves the point. Beyond 64 bits it is as good as without end.
std::int64_t placesOf(std::string_view exponent) {
    if (exponent.empty()) return 0;
    if (exponent.front() == '+') exponent.remove_prefix(1);
    std::int64_t places = 0;
    const auto read = std::from_chars(exponent.data(), exponent.data() + exponent.size(), places);
    constexpr std::int64_t endless = std::numeric_limits<std::int64_t>::max() / 2;
    if (read.ec != std::errc()) return exponent.front() == '-' ? -endless : endless;
    return std::clamp(places, -endless, endless);
}

/// A number written with a fraction or an exponent, digit by digit: a double would round beyond
/// 2^53.
std::optional<Whole> parseDecimal(std::string_view text) {
    const bool isNegative = text.starts_with('-');
    if (isNegative) text.remove_prefix(1);
    const std::size_t mantissaEnd = std::min(text.find_first_of("eE"), text.size());
    const std::string_view mantissa = text.substr(0, mantissaEnd);
    std::string digits(mantissa);
    std::erase(digits, '.');
    const std::size_t zeros = std::min(digits.find_first_not_of('0'), digits.size());
    digits.erase(0, zeros);
    if (digits.empty()) return Whole{};

    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::int64_t before = // how many digits stand before the point once it has moved
        static_cast<std::int64_t>(point) - static_cast<std::int64_t>(zeros) +
        placesOf(text.substr(std::min(mantissaEnd + 1, text.size())));
    constexpr std::int64_t mostDigits = std::numeric_limits<std::int64_t>::digits10 + 1;
    if (before <= 0) return Whole{0, true};
    if (before > mostDigits) return std::nullopt;
    const auto kept = static_cast<std::size_t>(before);
    Whole whole;
    whole.hasFraction =
        kept < digits.size() && digits.find_first_not_of('0', kept) != std::string::npos;
    digits.resize(kept, '0');
    if (isNegative) digits.insert(digits.begin(), '-');
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), whole.number);
    return read.ec == std::errc() ? std::optional(whole) : std::nullopt;
}

/// A valid number without its fraction; none when that exceeds 64 bits.
std::optional<Whole> parseWhole(std::string_view text) {
    Whole whole;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, whole.number);
    return read.ec == std::errc() && read.ptr == end ? whole : parseDecimal(text);
}

std::optional<double> parseDouble(std::string_view text) {
    double number = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc())
        return std::nullopt;
    return number;
}

} // namespace

bool skip(JSONValue value) {
    return skipNested(value, 0);
}

bool readString(JSONValue value, std::optional<std::string_view>& text) {
    json_type type{};
    if (value.type().get(type) != SUCCESS) return false;
    if (type != json_type::string) return skip(value);
    const std::string_view quoted = token(value);
    const std::string_view inside = quoted.substr(1, quoted.size() - 2);
    if (inside.find('\\') == std::string_view::npos) {
        text = inside;
        return consumeString(value);
    }
    if (!isValidString(quoted)) return false;
    std::string_view unescaped;
    text = value.get_string().get(unescaped) == SUCCESS ? unescaped : inside;
    return true;
}

bool readInteger(JSONValue value, std::int64_t& number) {
    bool valid = false;
    const std::string_view text = numberToken(value, valid);
    if (text.empty()) return valid;
    if (const std::optional<Whole> whole = parseWhole(text)) number = whole->number;
    return true;
}

bool readWholeNumber(JSONValue value, std::optional<std::int64_t>& number) {
    bool valid = false;
    const std::string_view text = numberToken(value, valid);
    if (text.empty()) return valid;
    const std::optional<Whole> whole = parseWhole(text);
    if (whole && !whole->hasFraction) number = whole->number;
    return true;
}

bool readDouble(JSONValue value, std::optional<double>& number) {
    bool valid = false;
    const std::string_view text = numberToken(value, valid);
    if (text.empty()) return valid;
    number = parseDouble(text);
    return true;
}

bool readBool(JSONValue value, bool& flag) {
    json_type type{};
    if (value.type().get(type) != SUCCESS) return false;
    if (type != json_type::boolean) return skip(value);
    const std::string_view text = token(value);
    flag = text == "true";
    return isValidScalar(text);
}

bool readNull(JSONValue value, bool& isNull) {
    json_type type{};
    if (value.type().get(type) != SUCCESS) return false;
    isNull = type == json_type::null;
    return skip(value);
}

bool readKey(simdjson::ondemand::field& field, std::string_view& key) {
    const char* inside = field.key().raw();
    std::size_t length = 0;
    bool escaped = false;
    while (inside[length] != '"') {
        const bool escape = inside[length] == '\\';
        escaped = escaped || escape;
        length += escape ? 2 : 1;
    }
    key = {inside, length};
    if (!escaped) return true;
    if (!hasValidEscapes(key)) return false;
    if (field.unescaped_key().get(key) != SUCCESS) key = {};
    return true;
}

bool JSONReader::parse(std::string_view text, simdjson::ondemand::document& document) {
    const std::size_t needed = text.size() + simdjson::SIMDJSON_PADDING;
    if (needed > capacity) {
        capacity = std::max<std::size_t>(needed, 65'536);
        padded = std::make_unique_for_overwrite<char[]>(capacity);
    }
    text.copy(padded.get(), text.size());
    std::memset(padded.get() + text.size(), 0, simdjson::SIMDJSON_PADDING);
    return parser.iterate(padded.get(), text.size(), capacity).get(document) == SUCCESS;
}

bool JSONReader::isAtEnd(simdjson::ondemand::document& document) {
    return document.current_location().error() == simdjson::OUT_OF_BOUNDS;
}

} // namespace tokwatch

#pragma once

#include <simdjson.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>

namespace tokwatch {

using JSONValue = simdjson::ondemand::value;

/// Checks and leaves a value that nobody reads. False when it is not valid JSON. Unpaired
/// surrogates and numbers of any size are valid here: what we do not read must not cost an event.
bool skip(JSONValue value);

/// The value's text when it is a string. `text` stays untouched otherwise. False when it is not
/// valid JSON. A text with an unpaired surrogate is given with its escapes as written. Valid until
/// the next document.
bool readString(JSONValue value, std::optional<std::string_view>& text);

/// The value when it is a number that fits 64 bits, a fraction cut off; all else leaves `number`
/// untouched. Exact however the number is written. False when it is not valid JSON.
bool readInteger(JSONValue value, std::int64_t& number);
/// As `readInteger`, but a number with a fraction leaves `number` untouched, too.
bool readWholeNumber(JSONValue value, std::optional<std::int64_t>& number);
bool readDouble(JSONValue value, std::optional<double>& number);
bool readBool(JSONValue value, bool& flag);
/// Whether the value is null.
bool readNull(JSONValue value, bool& isNull);

/// The key of a field, unescaped; an unpaired surrogate makes it a key that matches nothing.
/// False when it is not valid JSON.
bool readKey(simdjson::ondemand::field& field, std::string_view& key);

/// Visits the fields of an object: `visit(key, value)` reads or skips the value, and answers false
/// when that was not valid JSON, as this does.
template<typename Visitor>
bool forEachField(simdjson::ondemand::object object, Visitor&& visit) {
    for (auto result : object) {
        simdjson::ondemand::field field;
        std::string_view key;
        if (std::move(result).get(field) != simdjson::SUCCESS || !readKey(field, key) ||
            !visit(key, field.value()))
            return false;
    }
    return true;
}

template<typename Visitor>
bool forEachElement(simdjson::ondemand::array array, Visitor&& visit) {
    for (auto result : array) {
        JSONValue element;
        // NOLINTNEXTLINE(performance-move-const-arg): the library's `get` takes an rvalue.
        if (std::move(result).get(element) != simdjson::SUCCESS || !visit(element)) return false;
    }
    return true;
}

/// As `forEachField` when the value is an object; `isObject` tells whether it was.
template<typename Visitor>
bool readObject(JSONValue value, bool& isObject, Visitor&& visit) {
    simdjson::ondemand::json_type type{};
    if (value.type().get(type) != simdjson::SUCCESS) return false;
    isObject = type == simdjson::ondemand::json_type::object;
    if (!isObject) return skip(value);
    simdjson::ondemand::object object;
    return value.get_object().get(object) == simdjson::SUCCESS &&
           forEachField(object, std::forward<Visitor>(visit));
}

/// As `forEachElement` when the value is an array.
template<typename Visitor>
bool readArray(JSONValue value, bool& isArray, Visitor&& visit) {
    simdjson::ondemand::json_type type{};
    if (value.type().get(type) != simdjson::SUCCESS) return false;
    isArray = type == simdjson::ondemand::json_type::array;
    if (!isArray) return skip(value);
    simdjson::ondemand::array array;
    return value.get_array().get(array) == simdjson::SUCCESS &&
           forEachElement(array, std::forward<Visitor>(visit));
}

/// One JSON document at a time, parsed in memory that is used again for the next.
class JSONReader {
  public:
    /// Visits the top-level object's fields. False when the text is not one valid JSON object, in
    /// which case nothing that the visitor learned may be used.
    template<typename Visitor>
    bool readObject(std::string_view text, Visitor&& visit) {
        simdjson::ondemand::document document;
        simdjson::ondemand::object object;
        return parse(text, document) && document.get_object().get(object) == simdjson::SUCCESS &&
               forEachField(object, std::forward<Visitor>(visit)) && isAtEnd(document);
    }

  private:
    bool parse(std::string_view text, simdjson::ondemand::document& document);
    static bool isAtEnd(simdjson::ondemand::document& document);

    simdjson::ondemand::parser parser;
    std::unique_ptr<char[]> padded; ///< the text, followed by the bytes that the parser may look at
    std::size_t capacity = 0;
};

} // namespace tokwatch

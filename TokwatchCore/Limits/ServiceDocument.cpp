#include "TokwatchCore/Limits/ServiceDocument.h"

#include "TokwatchCore/Support/DecodingError.h"

#include <cmath>

namespace tokwatch::document {
namespace {

/// The value of a key if `isRight`; null when absent.
const Value* checked(const Value& object, const char* key,
                     bool (Value::*isRight)() const noexcept) {
    const Value* value = find(object, key);
    if (value != nullptr && !(value->*isRight)())
        throw DecodingError(std::string("An unexpected type of \"") + key + "\".");
    return value;
}

} // namespace

Value parse(std::string_view text) {
    Value value = Value::parse(text, nullptr, false);
    if (!value.is_object()) throw DecodingError("Not a JSON object.");
    return value;
}

const Value* find(const Value& object, const char* key) {
    if (!object.is_object()) throw DecodingError("Expected an object.");
    const auto found = object.find(key);
    return found == object.end() || found->is_null() ? nullptr : &*found;
}

std::optional<std::string> string(const Value& object, const char* key) {
    const Value* value = checked(object, key, &Value::is_string);
    if (value == nullptr) return std::nullopt;
    return value->get<std::string>();
}

std::optional<double> number(const Value& object, const char* key) {
    const Value* value = checked(object, key, &Value::is_number);
    if (value == nullptr) return std::nullopt;
    return value->get<double>();
}

std::optional<std::int64_t> integer(const Value& object, const char* key) {
    const std::optional<double> value = number(object, key);
    if (!value) return std::nullopt;
    // The bound is 2^63, the first double beyond the range.
    if (std::trunc(*value) != *value || std::abs(*value) >= 9223372036854775808.0)
        throw DecodingError(std::string("Expected an integer in \"") + key + "\".");
    return static_cast<std::int64_t>(*value);
}

std::optional<bool> boolean(const Value& object, const char* key) {
    const Value* value = checked(object, key, &Value::is_boolean);
    if (value == nullptr) return std::nullopt;
    return value->get<bool>();
}

const Value* object(const Value& object, const char* key) {
    return checked(object, key, &Value::is_object);
}

const Value* array(const Value& object, const char* key) {
    return checked(object, key, &Value::is_array);
}

} // namespace tokwatch::document

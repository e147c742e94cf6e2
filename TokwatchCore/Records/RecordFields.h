#pragma once

#include "TokwatchCore/Records/RecordCoding.h"

#include <cmath>
#include <concepts>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

/// How records with a field list are encoded and decoded, in the list's order. The list of `Record`
/// is `constexpr auto fieldsOf(const Record*)` in this namespace, a tuple of `Field`s; the source
/// that has it instantiates `encode` and `decode` for the others. What a record may not hold is
/// refused by a `checkBounds(const Record&)` beside its list, by a DecodingError.
namespace tokwatch {

template<typename Record, typename Value>
struct Field {
    const char* key;
    Value Record::*member;
};
// Said to clang, which before its 17th release finds none for aggregates.
template<typename Record, typename Value>
Field(const char*, Value Record::*) -> Field<Record, Value>;

extern template Json encode(const TokenCounts&, DateCoding);
extern template Json encode(const LimitWindow&, DateCoding);
extern template Json encode(const Credits&, DateCoding);
extern template TokenCounts decode(const Json&, DateCoding);
extern template LimitWindow decode(const Json&, DateCoding);
extern template Credits decode(const Json&, DateCoding);

namespace coding {

template<typename Value>
inline constexpr bool isList = false;
template<typename Element>
inline constexpr bool isList<std::vector<Element>> = true;

template<typename Value>
inline constexpr bool isDictionary = false;
template<typename Element, typename Order>
inline constexpr bool isDictionary<std::map<std::string, Element, Order>> = true;

template<typename Value>
void encodeField(Json& json, const char* key, const Value& value, DateCoding dates) {
    json[key] = encode(value, dates);
}

template<typename Value>
void encodeField(Json& json, const char* key, const std::optional<Value>& value, DateCoding dates) {
    if (!value) return;
    // A number that JSON cannot hold is as good as none.
    if constexpr (std::floating_point<Value>) {
        if (!std::isfinite(*value)) return;
    }
    encodeField(json, key, *value, dates);
}

template<typename Value>
void decodeField(const Json& json, const char* key, Value& value, DateCoding dates) {
    value = decode<Value>(required(json, key), dates);
}

template<typename Value>
void decodeField(const Json& json, const char* key, std::optional<Value>& value, DateCoding dates) {
    if (const Json* found = optional(json, key)) value = decode<Value>(*found, dates);
}

} // namespace coding

template<typename Value>
Json encode(const Value& value, DateCoding dates) {
    if constexpr (std::is_arithmetic_v<Value> || std::same_as<Value, std::string>) {
        return value;
    } else if constexpr (coding::isList<Value>) {
        Json json = Json::array();
        for (const auto& element : value)
            json.push_back(encode(element, dates));
        return json;
    } else if constexpr (coding::isDictionary<Value>) {
        Json json = Json::object();
        for (const auto& [key, element] : value)
            json[key] = encode(element, dates);
        return json;
    } else {
        Json json = Json::object();
        const auto put = [&](const auto&... field) {
            (coding::encodeField(json, field.key, value.*field.member, dates), ...);
        };
        std::apply(put, fieldsOf(&value));
        return json;
    }
}

template<typename Value>
Value decode(const Json& json, DateCoding dates) {
    if constexpr (std::same_as<Value, bool>) {
        return coding::boolean(json);
    } else if constexpr (std::same_as<Value, double>) {
        return coding::number(json);
    } else if constexpr (std::same_as<Value, std::int64_t>) {
        return coding::integer(json);
    } else if constexpr (std::same_as<Value, std::uint64_t>) {
        return coding::unsignedInteger(json);
    } else if constexpr (std::same_as<Value, std::string>) {
        return coding::string(json);
    } else if constexpr (coding::isList<Value>) {
        Value list;
        for (const Json& element : coding::array(json))
            list.push_back(decode<typename Value::value_type>(element, dates));
        return list;
    } else if constexpr (coding::isDictionary<Value>) {
        Value dictionary;
        for (const auto& [key, element] : coding::object(json).items())
            dictionary.emplace(key, decode<typename Value::mapped_type>(element, dates));
        return dictionary;
    } else {
        Value record;
        const auto take = [&](const auto&... field) {
            (coding::decodeField(json, field.key, record.*field.member, dates), ...);
        };
        std::apply(take, fieldsOf(&record));
        if constexpr (requires { checkBounds(record); }) checkBounds(record);
        return record;
    }
}

} // namespace tokwatch

#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Reading what others wrote: an absent or null key is absent, unknown keys do not matter, and a
/// known key of another type spoils the document (DecodingError).
namespace tokwatch::document {

/// Sorted keys, since looking for each key among all the others, as an ordered object does, would
/// take minutes over a hostile body of the largest size.
using Value = nlohmann::json;

/// The document's top object.
Value parse(std::string_view text);

/// The value of a key; null when absent.
const Value* find(const Value& object, const char* key);

std::optional<std::string> string(const Value& object, const char* key);
std::optional<double> number(const Value& object, const char* key);
/// 12.0 is one too.
std::optional<std::int64_t> integer(const Value& object, const char* key);
std::optional<bool> boolean(const Value& object, const char* key);
const Value* object(const Value& object, const char* key);
const Value* array(const Value& object, const char* key);

} // namespace tokwatch::document

#pragma once

#include "TokwatchCore/Records/FileCursor.h"
#include "TokwatchCore/Records/LimitRecords.h"
#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Records/TokenCounts.h"
#include "TokwatchCore/Support/DecodingError.h"

#include <nlohmann/json.hpp>

#include <string_view>

/// The JSON forms of the records. Keys are the field names in declaration order; an absent optional
/// leaves its key out, and reads from an absent or null key. All else is required: a missing key, a
/// null, a wrong type, an unknown case, or what is beyond the bounds of limit records (a fraction
/// that no surface can show) is a DecodingError, never a partial record.
namespace tokwatch {

using Json = nlohmann::ordered_json;

/// How a document writes dates. A reader must use its writer's.
enum class DateCoding {
    secondsSince2001, ///< a number of seconds since 2001-01-01T00:00:00Z: the store's rows
    iso8601,          ///< text in UTC with whole seconds: the snapshot and what the commands print
};

/// Parses a document. A syntax error is a DecodingError, and so is a nesting that no record has: it
/// would overflow the stack of whoever copies the value.
Json parseJson(std::string_view text);

/// One line of text. Text that is not UTF-8 (file names may hold any bytes) keeps its valid part,
/// with U+FFFD for the rest; what could command a terminal or turn text around is escaped.
std::string jsonText(const Json& json);

/// Both for what the system stores or prints. Without dates in it, `dates` means nothing.
template<typename Value>
Json encode(const Value& value, DateCoding dates = DateCoding::secondsSince2001);
template<typename Value>
Value decode(const Json& json, DateCoding dates = DateCoding::secondsSince2001);

// What is no list of fields.
template<>
Json encode(const Date& date, DateCoding dates);
template<>
Json encode(const ProviderID& provider, DateCoding dates);
template<>
Json encode(const ProviderStatus& status, DateCoding dates);
template<>
Json encode(const LimitSource& source, DateCoding dates);
template<>
Date decode(const Json& json, DateCoding dates);
template<>
ProviderID decode(const Json& json, DateCoding dates);
template<>
ProviderStatus decode(const Json& json, DateCoding dates);
template<>
LimitSource decode(const Json& json, DateCoding dates);

/// The building stones of the above.
namespace coding {

const Json& object(const Json& json);
const Json& array(const Json& json);
/// The value of a required key.
const Json& required(const Json& object, const char* key);
/// The value of an optional key; null when it is absent or null.
const Json* optional(const Json& object, const char* key);
std::string string(const Json& json);
double number(const Json& json);
std::int64_t integer(const Json& json);
std::uint64_t unsignedInteger(const Json& json);
bool boolean(const Json& json);

} // namespace coding
} // namespace tokwatch

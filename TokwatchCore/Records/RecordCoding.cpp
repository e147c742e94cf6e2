#include "TokwatchCore/Records/RecordCoding.h"

#include "TokwatchCore/Support/ISO8601.h"
#include "TokwatchCore/Support/PlainText.h"

#include <cmath>
#include <limits>

namespace tokwatch {
namespace {

/// 2001-01-01T00:00:00Z in Unix seconds.
constexpr double referenceEpoch = 978307200;

Json emptyObject() {
    return Json::object();
}

Json singleCaseObject(std::string_view name, Json payload) {
    Json json = emptyObject();
    json[std::string(name)] = std::move(payload);
    return json;
}

Json datePayload(Date asOf, DateCoding dates) {
    Json payload = emptyObject();
    payload["asOf"] = encode(asOf, dates);
    return payload;
}

/// A number that JSON cannot hold is as good as none.
void setIfPresent(Json& json, const char* key, std::optional<double> value) {
    if (value && std::isfinite(*value)) json[key] = *value;
}

std::optional<double> optionalNumber(const Json& json, const char* key) {
    const Json* value = coding::optional(json, key);
    if (value == nullptr) return std::nullopt;
    return coding::number(*value);
}

/// Reading a document takes no depth of the call stack, but copying and printing it do.
constexpr int deepestNesting = 64;

bool isNestedTooDeeply(std::string_view text) {
    int depth = 0;
    bool inText = false;
    for (std::size_t i = 0; i < text.size() && depth <= deepestNesting; ++i) {
        const char c = text[i];
        if (c == '"')
            inText = !inText;
        else if (inText)
            i += c == '\\' ? 1 : 0;
        else if (c == '[' || c == '{')
            ++depth;
        else if (c == ']' || c == '}')
            --depth;
    }
    return depth > deepestNesting;
}

} // namespace

namespace coding {

const Json& object(const Json& json) {
    if (!json.is_object()) throw DecodingError("Expected an object.");
    return json;
}

const Json& array(const Json& json) {
    if (!json.is_array()) throw DecodingError("Expected an array.");
    return json;
}

const Json& required(const Json& json, const char* key) {
    const auto found = object(json).find(key);
    if (found == json.end())
        throw DecodingError(std::string("No value for the key \"") + key + "\".");
    return *found;
}

const Json* optional(const Json& json, const char* key) {
    const auto found = object(json).find(key);
    return found == json.end() || found->is_null() ? nullptr : &*found;
}

std::string string(const Json& json) {
    if (!json.is_string()) throw DecodingError("Expected a string.");
    return json.get<std::string>();
}

double number(const Json& json) {
    if (!json.is_number()) throw DecodingError("Expected a number.");
    return json.get<double>();
}

std::int64_t integer(const Json& json) {
    if (json.is_number_unsigned()) {
        const auto value = json.get<std::uint64_t>();
        if (value <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            return static_cast<std::int64_t>(value);
    } else if (json.is_number_integer()) {
        return json.get<std::int64_t>();
    } else if (json.is_number_float()) {
        // 12.0 is an integer too. The bound is 2^63, the first double beyond the range.
        const double value = json.get<double>();
        if (std::trunc(value) == value && std::abs(value) < 9223372036854775808.0)
            return static_cast<std::int64_t>(value);
    }
    throw DecodingError("Expected a 64-bit integer.");
}

bool boolean(const Json& json) {
    if (!json.is_boolean()) throw DecodingError("Expected true or false.");
    return json.get<bool>();
}

std::pair<std::string, const Json&> singleCase(const Json& json) {
    object(json);
    if (json.size() != 1) throw DecodingError("Invalid number of keys found, expected one.");
    return {json.begin().key(), json.begin().value()};
}

} // namespace coding

Json parseJson(std::string_view text) {
    if (isNestedTooDeeply(text)) throw DecodingError("The document is nested too deeply.");
    Json json = Json::parse(text, nullptr, false);
    if (json.is_discarded()) throw DecodingError("Not a JSON document.");
    return json;
}

std::string jsonText(const Json& json) {
    return plainJson(json.dump(-1, ' ', false, Json::error_handler_t::replace));
}

Json encode(Date date, DateCoding dates) {
    if (dates == DateCoding::iso8601) return formatISO8601(date);
    return unixSeconds(date) - referenceEpoch;
}

Date decodeDate(const Json& json, DateCoding dates) {
    if (dates == DateCoding::secondsSince2001)
        return dateFromUnixSeconds(coding::number(json) + referenceEpoch);
    const std::optional<Date> date = parseISO8601(coding::string(json));
    if (!date) throw DecodingError("Expected an ISO 8601 date.");
    return *date;
}

Json encode(ProviderID provider) {
    return std::string(rawValue(provider));
}

ProviderID decodeProviderID(const Json& json) {
    const std::optional<ProviderID> provider = providerFromRawValue(coding::string(json));
    if (!provider) throw DecodingError("Unknown provider.");
    return *provider;
}

Json encode(const TokenCounts& tokens) {
    Json json = emptyObject();
    json["uncachedInput"] = tokens.uncachedInput;
    json["cacheRead"] = tokens.cacheRead;
    json["cacheWrite5m"] = tokens.cacheWrite5m;
    json["cacheWrite1h"] = tokens.cacheWrite1h;
    json["output"] = tokens.output;
    json["reasoning"] = tokens.reasoning;
    return json;
}

TokenCounts decodeTokenCounts(const Json& json) {
    const auto field = [&json](const char* key) {
        return coding::integer(coding::required(json, key));
    };
    TokenCounts tokens;
    tokens.uncachedInput = field("uncachedInput");
    tokens.cacheRead = field("cacheRead");
    tokens.cacheWrite5m = field("cacheWrite5m");
    tokens.cacheWrite1h = field("cacheWrite1h");
    tokens.output = field("output");
    tokens.reasoning = field("reasoning");
    return tokens;
}

Json encode(const FileCursor& cursor) {
    Json json = emptyObject();
    json["path"] = cursor.path;
    json["inode"] = cursor.inode;
    json["offset"] = cursor.offset;
    json["context"] = emptyObject();
    for (const auto& [key, value] : cursor.context)
        json["context"][key] = value;
    return json;
}

FileCursor decodeFileCursor(const Json& json) {
    FileCursor cursor;
    cursor.path = coding::string(coding::required(json, "path"));
    const Json& inode = coding::required(json, "inode");
    if (!inode.is_number_unsigned()) throw DecodingError("Expected an unsigned 64-bit integer.");
    cursor.inode = inode.get<std::uint64_t>();
    cursor.offset = coding::integer(coding::required(json, "offset"));
    for (const auto& [key, value] : coding::object(coding::required(json, "context")).items())
        cursor.context.emplace(key, coding::string(value));
    return cursor;
}

Json encode(const LimitSource& source, DateCoding dates) {
    struct Encoder {
        DateCoding dates;
        Json operator()(const LimitSource::Live&) const {
            return singleCaseObject("live", emptyObject());
        }
        Json operator()(const LimitSource::Local& local) const {
            return singleCaseObject("local", datePayload(local.asOf, dates));
        }
        Json operator()(const LimitSource::Stale& stale) const {
            return singleCaseObject("stale", datePayload(stale.asOf, dates));
        }
    };
    return std::visit(Encoder{dates}, source.value);
}

LimitSource decodeLimitSource(const Json& json, DateCoding dates) {
    const auto [name, payload] = coding::singleCase(json);
    coding::object(payload);
    if (name == "live") return LimitSource::live();
    if (name == "local")
        return LimitSource::local(decodeDate(coding::required(payload, "asOf"), dates));
    if (name == "stale")
        return LimitSource::stale(decodeDate(coding::required(payload, "asOf"), dates));
    throw DecodingError("Unknown limit source \"" + name + "\".");
}

Json encode(const LimitWindow& window, DateCoding dates) {
    Json json = emptyObject();
    json["id"] = window.id;
    json["label"] = window.label;
    json["usedFraction"] = window.usedFraction;
    setIfPresent(json, "duration", window.duration);
    if (window.resetsAt) json["resetsAt"] = encode(*window.resetsAt, dates);
    json["source"] = encode(window.source, dates);
    return json;
}

LimitWindow decodeLimitWindow(const Json& json, DateCoding dates) {
    LimitWindow window;
    window.id = coding::string(coding::required(json, "id"));
    window.label = coding::string(coding::required(json, "label"));
    window.usedFraction = coding::number(coding::required(json, "usedFraction"));
    window.duration = optionalNumber(json, "duration");
    if (const Json* resetsAt = coding::optional(json, "resetsAt"))
        window.resetsAt = decodeDate(*resetsAt, dates);
    window.source = decodeLimitSource(coding::required(json, "source"), dates);
    return window;
}

Json encode(const Credits& credits) {
    Json json = emptyObject();
    json["label"] = credits.label;
    setIfPresent(json, "balanceUSD", credits.balanceUSD);
    setIfPresent(json, "spentUSD", credits.spentUSD);
    setIfPresent(json, "limitUSD", credits.limitUSD);
    json["unlimited"] = credits.unlimited;
    return json;
}

Credits decodeCredits(const Json& json) {
    Credits credits;
    credits.label = coding::string(coding::required(json, "label"));
    credits.balanceUSD = optionalNumber(json, "balanceUSD");
    credits.spentUSD = optionalNumber(json, "spentUSD");
    credits.limitUSD = optionalNumber(json, "limitUSD");
    credits.unlimited = coding::boolean(coding::required(json, "unlimited"));
    return credits;
}

Json encode(ProviderStatus status) {
    return singleCaseObject(rawValue(status), emptyObject());
}

ProviderStatus decodeProviderStatus(const Json& json) {
    const auto [name, payload] = coding::singleCase(json);
    coding::object(payload);
    for (const ProviderStatus status : allProviderStatuses) {
        if (rawValue(status) == name) return status;
    }
    throw DecodingError("Unknown provider status \"" + name + "\".");
}

Json encode(const ProviderLimits& limits, DateCoding dates) {
    Json json = emptyObject();
    if (limits.plan) json["plan"] = *limits.plan;
    json["windows"] = Json::array();
    for (const LimitWindow& window : limits.windows)
        json["windows"].push_back(encode(window, dates));
    if (limits.credits) json["credits"] = encode(*limits.credits);
    json["status"] = encode(limits.status);
    json["fetchedAt"] = encode(limits.fetchedAt, dates);
    return json;
}

ProviderLimits decodeProviderLimits(const Json& json, DateCoding dates) {
    ProviderLimits limits;
    if (const Json* plan = coding::optional(json, "plan")) limits.plan = coding::string(*plan);
    for (const Json& window : coding::array(coding::required(json, "windows")))
        limits.windows.push_back(decodeLimitWindow(window, dates));
    if (const Json* credits = coding::optional(json, "credits"))
        limits.credits = decodeCredits(*credits);
    limits.status = decodeProviderStatus(coding::required(json, "status"));
    limits.fetchedAt = decodeDate(coding::required(json, "fetchedAt"), dates);
    return limits;
}

} // namespace tokwatch

#include "TokwatchCore/Records/RecordCoding.h"

#include "TokwatchCore/Records/RecordFields.h"
#include "TokwatchCore/Support/ISO8601.h"
#include "TokwatchCore/Support/PlainText.h"

#include <cmath>
#include <limits>

namespace tokwatch {
namespace {

/// 2001-01-01T00:00:00Z in Unix seconds.
constexpr double referenceEpoch = 978307200;

Json singleCaseObject(std::string_view name, Json payload) {
    return Json::object({{std::string(name), std::move(payload)}});
}

/// The one key of an enumeration's object, and the object's value, an object, too.
std::pair<std::string, const Json&> singleCase(const Json& json) {
    if (coding::object(json).size() != 1)
        throw DecodingError("Invalid number of keys found, expected one.");
    return {json.begin().key(), coding::object(json.begin().value())};
}

/// No fraction that a service or a log reports is anywhere near; what is beyond cannot be shown.
constexpr double largestFraction = 1e6;
/// Bytes of a text that is shown; what our own producers write has half of them.
constexpr std::size_t longestText = 1024;

void checkText(const std::string& text) {
    if (text.size() > longestText) throw DecodingError("A text is too long.");
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

std::uint64_t unsignedInteger(const Json& json) {
    if (!json.is_number_unsigned()) throw DecodingError("Expected an unsigned 64-bit integer.");
    return json.get<std::uint64_t>();
}

bool boolean(const Json& json) {
    if (!json.is_boolean()) throw DecodingError("Expected true or false.");
    return json.get<bool>();
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

template<>
Json encode(const Date& date, DateCoding dates) {
    if (dates == DateCoding::iso8601) return formatISO8601(date);
    return unixSeconds(date) - referenceEpoch;
}

template<>
Date decode(const Json& json, DateCoding dates) {
    if (dates == DateCoding::secondsSince2001)
        return dateFromUnixSeconds(coding::number(json) + referenceEpoch);
    const std::optional<Date> date = parseISO8601(coding::string(json));
    if (!date) throw DecodingError("Expected an ISO 8601 date.");
    return *date;
}

template<>
Json encode(const ProviderID& provider, DateCoding) {
    return std::string(rawValue(provider));
}

template<>
ProviderID decode(const Json& json, DateCoding) {
    const std::optional<ProviderID> provider = providerFromRawValue(coding::string(json));
    if (!provider) throw DecodingError("Unknown provider.");
    return *provider;
}

template<>
Json encode(const ProviderStatus& status, DateCoding) {
    return singleCaseObject(rawValue(status), Json::object());
}

template<>
ProviderStatus decode(const Json& json, DateCoding) {
    const auto [name, payload] = singleCase(json);
    if (const auto status = caseNamed<ProviderStatus>(name)) return *status;
    throw DecodingError("Unknown provider status \"" + name + "\".");
}

constexpr auto fieldsOf(const LimitSource::Live*) {
    return std::tuple{};
}

constexpr auto fieldsOf(const LimitSource::Local*) {
    return std::tuple{Field{"asOf", &LimitSource::Local::asOf}};
}

constexpr auto fieldsOf(const LimitSource::Stale*) {
    return std::tuple{Field{"asOf", &LimitSource::Stale::asOf}};
}

template<>
Json encode(const LimitSource& source, DateCoding dates) {
    constexpr std::array names{"live", "local", "stale"};
    const auto payload = [dates](const auto& each) { return encode(each, dates); };
    return singleCaseObject(names[source.value.index()], std::visit(payload, source.value));
}

template<>
LimitSource decode(const Json& json, DateCoding dates) {
    const auto [name, payload] = singleCase(json);
    if (name == "live") return {decode<LimitSource::Live>(payload, dates)};
    if (name == "local") return {decode<LimitSource::Local>(payload, dates)};
    if (name == "stale") return {decode<LimitSource::Stale>(payload, dates)};
    throw DecodingError("Unknown limit source \"" + name + "\".");
}

constexpr auto fieldsOf(const TokenCounts*) {
    using R = TokenCounts;
    return std::tuple{Field{"uncachedInput", &R::uncachedInput},
                      Field{"cacheRead", &R::cacheRead},
                      Field{"cacheWrite5m", &R::cacheWrite5m},
                      Field{"cacheWrite1h", &R::cacheWrite1h},
                      Field{"output", &R::output},
                      Field{"reasoning", &R::reasoning}};
}

constexpr auto fieldsOf(const FileCursor*) {
    using R = FileCursor;
    return std::tuple{Field{"path", &R::path}, Field{"inode", &R::inode},
                      Field{"offset", &R::offset}, Field{"context", &R::context}};
}

constexpr auto fieldsOf(const LimitWindow*) {
    using R = LimitWindow;
    return std::tuple{Field{"id", &R::id},
                      Field{"label", &R::label},
                      Field{"usedFraction", &R::usedFraction},
                      Field{"duration", &R::duration},
                      Field{"resetsAt", &R::resetsAt},
                      Field{"source", &R::source}};
}

constexpr auto fieldsOf(const Credits*) {
    using R = Credits;
    return std::tuple{Field{"label", &R::label}, Field{"balanceUSD", &R::balanceUSD},
                      Field{"spentUSD", &R::spentUSD}, Field{"limitUSD", &R::limitUSD},
                      Field{"unlimited", &R::unlimited}};
}

constexpr auto fieldsOf(const ProviderLimits*) {
    using R = ProviderLimits;
    return std::tuple{Field{"plan", &R::plan}, Field{"windows", &R::windows},
                      Field{"credits", &R::credits}, Field{"status", &R::status},
                      Field{"fetchedAt", &R::fetchedAt}};
}

static void checkBounds(const LimitWindow& window) {
    checkText(window.id);
    checkText(window.label);
    if (!(std::abs(window.usedFraction) <= largestFraction))
        throw DecodingError("A fraction is out of range.");
}

static void checkBounds(const Credits& credits) {
    checkText(credits.label);
}

static void checkBounds(const ProviderLimits& limits) {
    checkText(limits.plan.value_or(""));
    if (limits.windows.size() > mostWindows) throw DecodingError("There are too many windows.");
}

template Json encode(const TokenCounts&, DateCoding);
template Json encode(const FileCursor&, DateCoding);
template Json encode(const LimitWindow&, DateCoding);
template Json encode(const Credits&, DateCoding);
template Json encode(const ProviderLimits&, DateCoding);
template TokenCounts decode(const Json&, DateCoding);
template FileCursor decode(const Json&, DateCoding);
template LimitWindow decode(const Json&, DateCoding);
template Credits decode(const Json&, DateCoding);
template ProviderLimits decode(const Json&, DateCoding);

} // namespace tokwatch

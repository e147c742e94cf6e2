#include "TokwatchCore/Ingestion/CodexLogParser.h"

#include "TokwatchCore/Ingestion/JSONLine.h"
#include "TokwatchCore/Ingestion/LeadingType.h"
#include "TokwatchCore/Records/PlausibleMoment.h"
#include "TokwatchCore/Support/CheckedArithmetic.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <algorithm>

namespace tokwatch {
namespace {

struct Usage {
    std::int64_t input = 0; ///< cached input included
    std::int64_t cachedInput = 0;
    std::int64_t cacheWrite = 0;
    std::int64_t output = 0;
    std::int64_t reasoning = 0;
};

struct RateWindow {
    std::optional<double> usedPercent;
    std::optional<double> windowMinutes;
    std::optional<double> resetsAt; ///< Unix seconds
};

struct RateLimits {
    bool present = false;
    RateWindow primary;
    RateWindow secondary;
    std::optional<std::string_view> id; ///< which limit of the account this is
    bool namesCredits = false;
    bool hasCredits = true; ///< unless the log denies it
    bool unlimited = false;
    std::optional<double> balance;
    std::optional<std::string_view> plan;
};

struct Payload {
    bool present = false;
    std::optional<std::string_view> type;
    std::optional<std::string_view> id;
    std::optional<std::string_view> model;
    std::optional<std::string_view> responseID;
    std::optional<std::string_view> session;
    std::optional<std::string_view> directory;
    bool hasUsage = false;
    bool hasTotals = false; ///< of the session so far
    Usage usage;
    RateLimits limits;
};

struct Line {
    std::optional<std::string_view> type;
    std::optional<std::string_view> timestamp;
    Payload payload;
};

bool readUsage(JSONValue value, bool& isUsage, Usage& usage) {
    return readObject(value, isUsage, [&usage](std::string_view key, JSONValue field) {
        if (key == "input_tokens") return readInteger(field, usage.input);
        if (key == "cached_input_tokens") return readInteger(field, usage.cachedInput);
        if (key == "cache_write_input_tokens") return readInteger(field, usage.cacheWrite);
        if (key == "output_tokens") return readInteger(field, usage.output);
        if (key == "reasoning_output_tokens") return readInteger(field, usage.reasoning);
        return skip(field);
    });
}

bool readWindow(JSONValue value, RateWindow& window) {
    bool isObject = false;
    return readObject(value, isObject, [&window](std::string_view key, JSONValue field) {
        if (key == "used_percent") return readDouble(field, window.usedPercent);
        if (key == "window_minutes") return readDouble(field, window.windowMinutes);
        if (key == "resets_at") return readDouble(field, window.resetsAt);
        return skip(field);
    });
}

bool readLimits(JSONValue value, RateLimits& limits) {
    return readObject(value, limits.present, [&limits](std::string_view key, JSONValue field) {
        if (key == "primary") return readWindow(field, limits.primary);
        if (key == "secondary") return readWindow(field, limits.secondary);
        if (key == "plan_type") return readString(field, limits.plan);
        if (key == "limit_id") return readString(field, limits.id);
        if (key != "credits") return skip(field);
        return readObject(field, limits.namesCredits,
                          [&limits](std::string_view name, JSONValue inner) {
                              if (name == "has_credits") return readBool(inner, limits.hasCredits);
                              if (name == "unlimited") return readBool(inner, limits.unlimited);
                              if (name == "balance") return readDouble(inner, limits.balance);
                              return skip(inner);
                          });
    });
}

bool readTotals(JSONValue value, bool& hasTotals) {
    return readObject(value, hasTotals,
                      [](std::string_view, JSONValue field) { return skip(field); });
}

bool readPayload(JSONValue value, Payload& payload) {
    return readObject(value, payload.present, [&payload](std::string_view key, JSONValue field) {
        if (key == "type") return readString(field, payload.type);
        if (key == "id") return readString(field, payload.id);
        if (key == "model") return readString(field, payload.model);
        if (key == "response_id") return readString(field, payload.responseID);
        if (key == "session_id") return readString(field, payload.session);
        if (key == "cwd") return readString(field, payload.directory);
        if (key == "usage") return readUsage(field, payload.hasUsage, payload.usage);
        if (key == "info") return readTotals(field, payload.hasTotals);
        if (key == "rate_limits") return readLimits(field, payload.limits);
        return skip(field);
    });
}

bool readLine(JSONReader& reader, std::string_view text, Line& line) {
    return reader.readObject(text, [&line](std::string_view key, JSONValue field) {
        if (key == "type" && !line.type) return readString(field, line.type);
        if (key == "timestamp") return readString(field, line.timestamp);
        if (key == "payload") return readPayload(field, line.payload);
        return skip(field);
    });
}

TokenCounts countsOf(const Usage& usage) {
    TokenCounts tokens;
    tokens.uncachedInput =
        std::max<std::int64_t>(checkedSubtract(usage.input, usage.cachedInput), 0);
    tokens.cacheRead = usage.cachedInput;
    tokens.cacheWrite5m = usage.cacheWrite;
    tokens.output = usage.output;
    tokens.reasoning = usage.reasoning;
    return tokens;
}

void addWindow(std::vector<LimitWindow>& windows, const RateWindow& window, const char* id,
               const char* label, Date asOf) {
    if (!window.usedPercent) return;
    LimitWindow shown;
    shown.id = id;
    shown.label = label;
    shown.usedFraction = clampedFraction(*window.usedPercent);
    if (window.windowMinutes) shown.duration = plausibleDuration(*window.windowMinutes * 60);
    if (window.resetsAt) shown.resetsAt = plausibleMoment(*window.resetsAt);
    shown.source = LimitSource::local(asOf);
    windows.push_back(std::move(shown));
}

/// None for an account that never had credits: "$0.00 left" would sound like trouble.
std::optional<Credits> creditsOf(const RateLimits& read) {
    if (!read.namesCredits) return std::nullopt;
    const bool isEmpty = !read.unlimited && read.balance.value_or(0) == 0;
    if (!read.hasCredits && isEmpty) return std::nullopt;
    const auto balance = read.balance ? plausibleAmount(*read.balance) : read.balance;
    return Credits{"Credits", balance, std::nullopt, std::nullopt, read.unlimited};
}

std::optional<CodexLine> limitsOf(const RateLimits& read, Date asOf) {
    // Side models and premium plans have limits of their own, which are not the account's.
    if (read.id && *read.id != "codex") return std::nullopt;
    ProviderLimits limits;
    addWindow(limits.windows, read.primary, "session", "Session", asOf);
    addWindow(limits.windows, read.secondary, "weekly", "Weekly", asOf);
    if (limits.windows.empty()) return std::nullopt;
    limits.credits = creditsOf(read);
    if (read.plan) limits.plan = planName(*read.plan);
    limits.status = ProviderStatus::ok;
    limits.fetchedAt = asOf;
    return CodexLine::limits(std::move(limits));
}

bool isOfInterest(std::string_view type) {
    return type == "token_usage_record" || type == "event_msg" || type == "turn_context" ||
           type == "session_meta";
}

std::string_view entryOr(const std::map<std::string, std::string>& context, const char* key,
                         std::string_view fallback) {
    const auto found = context.find(key);
    return found == context.end() ? fallback : std::string_view(found->second);
}

} // namespace

CodexLogParser::CodexLogParser() : reader(std::make_unique<JSONReader>()) {}

CodexLogParser::~CodexLogParser() = default;

std::optional<CodexLine> CodexLogParser::none(LineVerdict why) {
    last = why;
    return std::nullopt;
}

std::optional<CodexLine> CodexLogParser::parse(std::string_view text) {
    const LeadingType leading = leadingType(text);
    if (leading.kind == LeadingType::Kind::notAnObject)
        return none(text.empty() ? LineVerdict::other : LineVerdict::unknownForm);
    if (leading.kind == LeadingType::Kind::found && !isOfInterest(leading.type))
        return none(LineVerdict::other);
    Line line;
    if (!readLine(*reader, text, line)) return none(LineVerdict::cut);
    const Payload& payload = line.payload;
    const bool isUsage = line.type == "token_usage_record";
    if (!line.type || !payload.present)
        return none(isUsage ? LineVerdict::noUsage : LineVerdict::other);
    if (line.type == "session_meta") {
        if (payload.id) context["session"] = *payload.id;
        if (payload.directory) directory = *payload.directory;
        return none(LineVerdict::other);
    }
    if (line.type == "turn_context") {
        if (payload.model) context["model"] = *payload.model;
        return none(LineVerdict::other);
    }
    const std::optional<Date> timestamp =
        line.timestamp ? parseISO8601(*line.timestamp) : std::nullopt;
    if (line.type == "event_msg") {
        const bool isCount = payload.type == "token_count";
        last = isCount && payload.hasTotals ? LineVerdict::cumulative : LineVerdict::other;
        if (!isCount || !timestamp || !payload.limits.present) return std::nullopt;
        return limitsOf(payload.limits, *timestamp);
    }
    if (!isUsage) return none(LineVerdict::other);
    if (!payload.hasUsage) return none(LineVerdict::noUsage);
    if (!timestamp) return none(LineVerdict::noTime);
    if (!payload.responseID) return none(LineVerdict::unknownForm);
    last = LineVerdict::counted;
    model.assign(entryOr(context, "model", "unknown"));
    session.assign(entryOr(context, "session", payload.session.value_or("")));
    const auto origin = [&] { return usageOrigin(ProviderID::codex, model, *line.timestamp); };
    const SumOrigin sumOrigin(origin);
    const TokenCounts tokens = countsOf(payload.usage);
    return CodexLine::usage({ProviderID::codex, model, session, std::string(*payload.responseID),
                             *timestamp, tokens, std::nullopt});
}

} // namespace tokwatch

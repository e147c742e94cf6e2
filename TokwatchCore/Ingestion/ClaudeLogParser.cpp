#include "TokwatchCore/Ingestion/ClaudeLogParser.h"

#include "TokwatchCore/Ingestion/JSONLine.h"
#include "TokwatchCore/Ingestion/LeadingType.h"
#include "TokwatchCore/Support/CheckedArithmetic.h"
#include "TokwatchCore/Support/ISO8601.h"

namespace tokwatch {
namespace {

struct Usage {
    TokenCounts tokens;
    std::int64_t flatCacheWrite = 0; ///< what older versions wrote, without the lifetimes
    bool hasCacheCreation = false;
};

struct Line {
    std::optional<std::string_view> type;
    std::optional<std::string_view> requestID;
    std::optional<std::string_view> timestamp;
    std::optional<std::string_view> session;
    std::optional<std::string_view> directory;
    std::optional<std::string_view> messageID;
    std::optional<std::string_view> model;
    bool hasMessage = false;
    bool hasUsage = false;
    bool isUnfinished = false;
    Usage usage;
};

bool readUsage(JSONValue value, bool& isUsage, Usage& usage) {
    usage = {};
    return readObject(value, isUsage, [&usage](std::string_view key, JSONValue field) {
        TokenCounts& tokens = usage.tokens;
        if (key == "input_tokens") return readInteger(field, tokens.uncachedInput);
        if (key == "cache_read_input_tokens") return readInteger(field, tokens.cacheRead);
        if (key == "cache_creation_input_tokens") return readInteger(field, usage.flatCacheWrite);
        if (key == "output_tokens") return readInteger(field, tokens.output);
        bool isObject = false;
        if (key == "cache_creation") {
            const bool valid =
                readObject(field, isObject, [&tokens](std::string_view lifetime, JSONValue count) {
                    if (lifetime == "ephemeral_5m_input_tokens")
                        return readInteger(count, tokens.cacheWrite5m);
                    if (lifetime == "ephemeral_1h_input_tokens")
                        return readInteger(count, tokens.cacheWrite1h);
                    return skip(count);
                });
            usage.hasCacheCreation = isObject;
            return valid;
        }
        if (key == "output_tokens_details") {
            return readObject(field, isObject, [&tokens](std::string_view detail, JSONValue count) {
                return detail == "thinking_tokens" ? readInteger(count, tokens.reasoning)
                                                   : skip(count);
            });
        }
        return skip(field);
    });
}

bool readMessage(JSONValue value, Line& line) {
    return readObject(value, line.hasMessage, [&line](std::string_view key, JSONValue field) {
        if (key == "id") return readString(field, line.messageID);
        if (key == "model") return readString(field, line.model);
        if (key == "usage") return readUsage(field, line.hasUsage, line.usage);
        if (key == "stop_reason") return readNull(field, line.isUnfinished);
        return skip(field);
    });
}

bool readLine(JSONReader& reader, std::string_view text, Line& line) {
    return reader.readObject(text, [&line](std::string_view key, JSONValue field) {
        if (key == "type" && !line.type) return readString(field, line.type);
        if (key == "requestId") return readString(field, line.requestID);
        if (key == "timestamp") return readString(field, line.timestamp);
        if (key == "sessionId") return readString(field, line.session);
        if (key == "cwd") return readString(field, line.directory);
        if (key == "message") return readMessage(field, line);
        return skip(field);
    });
}

TokenCounts countsOf(const Usage& usage) {
    TokenCounts tokens = usage.tokens;
    // The flat number repeats the sum of the lifetimes where those are given.
    if (!usage.hasCacheCreation) tokens.cacheWrite5m = usage.flatCacheWrite;
    return tokens;
}

} // namespace

ClaudeLogParser::ClaudeLogParser() : reader(std::make_unique<JSONReader>()) {}

ClaudeLogParser::~ClaudeLogParser() = default;

std::optional<UsageEvent> ClaudeLogParser::parse(std::string_view text) {
    std::optional<ClaudeLine> line = parseLine(text);
    if (!line) return std::nullopt;
    return std::move(line->event);
}

std::optional<ClaudeLine> ClaudeLogParser::none(LineVerdict why) {
    last = why;
    return std::nullopt;
}

std::optional<ClaudeLine> ClaudeLogParser::parseLine(std::string_view text) {
    const LeadingType leading = leadingType(text);
    if (leading.kind == LeadingType::Kind::notAnObject)
        return none(text.empty() ? LineVerdict::other : LineVerdict::unknownForm);
    if (leading.kind == LeadingType::Kind::found && leading.type != "assistant")
        return none(LineVerdict::other);
    Line line;
    if (!readLine(*reader, text, line)) return none(LineVerdict::cut);
    if (line.type != "assistant") return none(LineVerdict::other);
    if (!line.hasMessage || !line.hasUsage) return none(LineVerdict::noUsage);
    if (line.model == "<synthetic>") return none(LineVerdict::synthetic);
    const std::optional<std::string_view> identity =
        line.messageID ? line.messageID : line.requestID;
    if (!identity) return none(LineVerdict::unknownForm);
    const std::optional<Date> timestamp =
        line.timestamp ? parseISO8601(*line.timestamp) : std::nullopt;
    if (!timestamp) return none(LineVerdict::noTime);
    const auto origin = [&line] {
        return usageOrigin(ProviderID::claude, line.model.value_or("unknown"), *line.timestamp);
    };
    const SumOrigin sumOrigin(origin);
    const TokenCounts tokens = countsOf(line.usage);
    if (tokens.total() <= 0) return none(LineVerdict::noUsage);
    last = LineVerdict::counted;
    // Each session's model is its own: what several threads share, they wait for.
    if (session.assign(line.session.value_or(""))) model = {};
    model.assign(line.model.value_or("unknown"));
    return ClaudeLine{{ProviderID::claude, model, session, std::string(*identity), *timestamp,
                       tokens, std::nullopt},
                      line.isUnfinished,
                      line.directory.value_or("")};
}

} // namespace tokwatch

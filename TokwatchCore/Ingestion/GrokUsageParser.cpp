#include "TokwatchCore/Ingestion/GrokUsageParser.h"

#include "TokwatchCore/Ingestion/JSONLine.h"
#include "TokwatchCore/Support/CheckedArithmetic.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <algorithm>

namespace tokwatch {
namespace {

/// US dollars in one unit of "costUsdTicks".
constexpr double usdPerTick = 1e-10;

struct ModelUsage {
    std::string model;
    std::int64_t input = 0; ///< cached reads included
    std::int64_t cachedRead = 0;
    std::int64_t cacheCreation = 0;
    std::int64_t output = 0;
    std::int64_t reasoning = 0;
    std::optional<double> costTicks;
};

struct Turn {
    std::optional<std::int64_t> number;
    std::optional<Date> endedAt;
    std::vector<ModelUsage> usage;
};

struct Session {
    std::optional<std::string> id;
    bool hasTurns = false;
    std::vector<Turn> turns;
};

bool readModelUsage(std::string_view model, JSONValue value, std::vector<ModelUsage>& all) {
    ModelUsage usage;
    usage.model = model;
    bool isObject = false;
    const bool valid = readObject(value, isObject, [&usage](std::string_view key, JSONValue field) {
        if (key == "inputTokens") return readInteger(field, usage.input);
        if (key == "cachedReadTokens") return readInteger(field, usage.cachedRead);
        if (key == "cacheCreationTokens") return readInteger(field, usage.cacheCreation);
        if (key == "outputTokens") return readInteger(field, usage.output);
        if (key == "reasoningTokens") return readInteger(field, usage.reasoning);
        if (key == "costUsdTicks") return readDouble(field, usage.costTicks);
        return skip(field);
    });
    if (valid && isObject) all.push_back(std::move(usage));
    return valid;
}

bool readTurn(JSONValue value, std::vector<Turn>& turns) {
    Turn turn;
    bool isObject = false;
    const bool valid = readObject(value, isObject, [&turn](std::string_view key, JSONValue field) {
        if (key == "turnNumber") return readWholeNumber(field, turn.number);
        if (key == "endedAt") {
            std::optional<std::string_view> text;
            const bool ok = readString(field, text);
            turn.endedAt = text ? parseISO8601(*text) : std::nullopt;
            return ok;
        }
        bool isUsage = false;
        if (key != "modelUsage") return skip(field);
        return readObject(field, isUsage, [&turn](std::string_view model, JSONValue usage) {
            return readModelUsage(model, usage, turn.usage);
        });
    });
    if (valid && isObject) turns.push_back(std::move(turn));
    return valid;
}

bool readSession(std::string_view document, Session& session) {
    JSONReader reader;
    return reader.readObject(document, [&session](std::string_view key, JSONValue field) {
        if (key == "sessionId") {
            std::optional<std::string_view> text;
            const bool ok = readString(field, text);
            if (text) session.id = *text;
            return ok;
        }
        if (key != "turns") return skip(field);
        return readArray(field, session.hasTurns,
                         [&session](JSONValue turn) { return readTurn(turn, session.turns); });
    });
}

UsageEvent eventOf(const SharedText& session, const Turn& turn, const ModelUsage& usage) {
    UsageEvent event;
    event.provider = ProviderID::grok;
    event.model = usage.model;
    event.sessionID = session;
    event.dedupKey.append(session).append("#").append(std::to_string(*turn.number));
    event.dedupKey.append("#").append(usage.model);
    event.timestamp = *turn.endedAt;
    const auto origin = [&] {
        return usageOrigin(ProviderID::grok, usage.model, formatISO8601(*turn.endedAt));
    };
    const SumOrigin sumOrigin(origin);
    event.tokens.uncachedInput =
        std::max<std::int64_t>(checkedSubtract(usage.input, usage.cachedRead), 0);
    event.tokens.cacheRead = usage.cachedRead;
    event.tokens.cacheWrite5m = usage.cacheCreation;
    event.tokens.output = usage.output;
    event.tokens.reasoning = usage.reasoning;
    if (usage.costTicks) event.reportedCostUSD = *usage.costTicks * usdPerTick;
    return event;
}

} // namespace

GrokDocument GrokUsageParser::read(std::string_view text) {
    Session session;
    GrokDocument document;
    document.isWhole = readSession(text, session) && session.id && session.hasTurns;
    if (!document.isWhole) return document;
    const SharedText id = *session.id;
    for (const Turn& turn : session.turns) {
        if (!turn.number || !turn.endedAt) {
            document.untimed += std::ssize(turn.usage);
            continue;
        }
        for (const ModelUsage& usage : turn.usage)
            document.events.push_back(eventOf(id, turn, usage));
    }
    return document;
}

std::vector<UsageEvent> GrokUsageParser::parse(std::string_view document) {
    return read(document).events;
}

} // namespace tokwatch

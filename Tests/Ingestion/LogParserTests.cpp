#include "Tests/Support/Testing.h"
#include "TokwatchCore/Ingestion/ClaudeLogParser.h"
#include "TokwatchCore/Ingestion/CodexLogParser.h"
#include "TokwatchCore/Ingestion/GrokUsageParser.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <ranges>

namespace tokwatch::testing {

std::optional<UsageEvent> parse(const std::string& line) {
    ClaudeLogParser parser;
    return parser.parse(line);
}

/// An assistant's line around a message; what a case leaves out is filled in.
std::string assistant(const std::string& message, const std::string& rest = R"("sessionId":"s",)") {
    return R"({"type":"assistant",)" + rest +
           R"("timestamp":"2025-06-01T12:34:56.789Z","message":)" + message + "}";
}

std::string usage(const std::string& fields) {
    return assistant(R"({"id":"m","model":"claude-x","usage":{)" + fields + "}}");
}

TEST(ClaudeLogParser, ReadsTheCounters) {
    const std::pair<const char*, TokenCounts> cases[]{
        {R"("input_tokens":1,"cache_read_input_tokens":2,"output_tokens":3)", {1, 2, 0, 0, 3, 0}},
        {R"("cache_creation_input_tokens":100)", {0, 0, 100, 0, 0, 0}},
        {R"("cache_creation_input_tokens":100,"cache_creation":{"ephemeral_1h_input_tokens":100})",
         {0, 0, 0, 100, 0, 0}},
        {R"("cache_creation":{"ephemeral_5m_input_tokens":7},"cache_creation_input_tokens":100)",
         {0, 0, 7, 0, 0, 0}},
        {R"("output_tokens":9,"output_tokens_details":{"thinking_tokens":4,"x":[1]})",
         {0, 0, 0, 0, 9, 4}},
        {R"("output_tokens":12.0,"input_tokens":3.99)", {3, 0, 0, 0, 12, 0}},
        {R"("output_tokens":1e2,"input_tokens":99999999999999999999e-5)",
         {999999999999999, 0, 0, 0, 100, 0}},
        {R"("output_tokens":9007199254740993.0,"input_tokens":0.00123E+4)",
         {12, 0, 0, 0, 9007199254740993, 0}},
        {R"("output_tokens":1,"input_tokens":1e99999999999999999999,"cache_read_input_tokens":5e-99999999999999999999)",
         {0, 0, 0, 0, 1, 0}},
        {R"("output_tokens":9223372036854775807.9,"cache_read_input_tokens":9.3e18)",
         {0, 0, 0, 0, 9223372036854775807, 0}},
        {R"("output_tokens":1,"input_tokens":99999999999999999999,"cache_read_input_tokens":true)",
         {0, 0, 0, 0, 1, 0}},
        {R"("output_tokens":3,"input_tokens":-2)", {-2, 0, 0, 0, 3, 0}}};
    for (const auto& [counters, tokens] : cases)
        EXPECT_EQ(parse(usage(counters)).value().tokens, tokens) << counters;
}

TEST(ClaudeLogParser, FindsIdentityModelAndSession) {
    const std::string tokens = R"("usage":{"output_tokens":1})";
    for (const auto& [id, key] :
         {std::pair{"", "req_1"}, {R"("id":"m",)", "m"}, {R"("id":7,)", "req_1"}})
        EXPECT_EQ(parse(assistant("{" + (id + tokens) + "}", R"("requestId":"req_1",)"))->dedupKey,
                  key);
    EXPECT_FALSE(parse(assistant("{" + tokens + "}")).has_value());
    const Date moment = *parseISO8601("2025-06-01T12:34:56.789Z");
    EXPECT_EQ(
        parse(assistant(R"({"id":"msg_1","model":"claude-x",)" + tokens + "}")),
        (UsageEvent{ProviderID::claude, "claude-x", "s", "msg_1", moment, {.output = 1}, {}}));
    const UsageEvent bare = parse(assistant(R"({"id":"m",)" + tokens + "}", "")).value();
    EXPECT_EQ(bare.model, "unknown");
    EXPECT_EQ(bare.sessionID, "");
    EXPECT_EQ(parse(assistant(R"({"id":"m\u0031\n","model":"\u00e9\ud83d\ude00",)" + tokens + "}"))
                  ->dedupKey,
              "m1\n");
    std::string escaped = usage(R"("output_tokens":1)");
    escaped.replace(escaped.find("assistant"), 1, R"(\u0061)");
    EXPECT_TRUE(parse(escaped).has_value()) << "a type is what it says, however it is written";
}

TEST(ClaudeLogParser, SkipsWhatDoesNotCount) {
    for (const std::string& line :
         {usage(R"("input_tokens":0,"output_tokens":0)"),
          usage(R"("output_tokens_details":{"thinking_tokens":4})"),
          usage(R"("input_tokens":-3,"output_tokens":2)"),
          assistant(R"({"id":"m","model":"<synthetic>","usage":{"output_tokens":1}})"),
          assistant(R"({"id":"m","usage":[1]})"), assistant(R"("text")"),
          std::string(R"([{"type":"assistant","usage":{}}])"), std::string("\"usage\"")})
        EXPECT_FALSE(parse(line).has_value()) << line;
    for (const auto& [from, to] : {std::pair{"2025-06-01T", "2025-06-01 "},
                                   {"timestamp", "time"},
                                   {"assistant", "Assistant"},
                                   {"assistant", "user"},
                                   {"type", "kind"}}) {
        std::string line = usage(R"("output_tokens":1)");
        line.replace(line.find(from), std::string_view(from).size(), to);
        EXPECT_FALSE(parse(line).has_value()) << line;
    }
}

TEST(ClaudeLogParser, SkipsMalformedLines) {
    const std::string good = usage(R"("output_tokens":1)");
    ASSERT_TRUE(parse(good).has_value());
    for (std::size_t cut = 0; cut < good.size(); ++cut) {
        EXPECT_FALSE(parse(good.substr(0, cut)).has_value()) << cut;
        // The next line glued on, as after a crash.
        if (cut == 0) continue;
        EXPECT_FALSE(parse(good.substr(0, cut) + good).has_value()) << cut;
    }
    constexpr std::string_view malformed =
        R"(tru|01|1.|-|.5|1e|+1|"\q"|"\u12g4"|[1,]|[1 2]|{"a":1,}|{"a" 1}|{a:1}|"a":1|["a":1]|)"
        R"({"a":"b":1}|nul|NaN|)"
        "\"\x01\"|\"\xff\"";
    for (const auto part : std::views::split(malformed, '|')) {
        const std::string unread(part.begin(), part.end());
        EXPECT_FALSE(parse(usage(R"("output_tokens":1,"x":)" + unread)).has_value()) << unread;
    }
    for (const char* read : {R"("id":"m":1)", R"("model":"m":"n")", R"("model":"\u006d":1)"})
        EXPECT_FALSE(
            parse(assistant("{" + std::string(read) + R"(,"id":"m","usage":{"output_tokens":1}})"))
                .has_value())
            << read;
    EXPECT_FALSE(parse(good + "}").has_value());
    EXPECT_FALSE(parse(good + "{}").has_value());
    EXPECT_TRUE(parse(" \t" + good + " \r").has_value());
}

TEST(ClaudeLogParser, LosesNoEventToAFieldThatItDoesNotRead) {
    for (const char* unread :
         {"\"\\ud83d\"", "\"\\udc00\\ud83d\"", "123456789012345678901234567890", "1e400", "-0",
          "[[],{},[{\"usage\":null}]]", "\"\\\"usage\\\\\"", "\"\\u0000\""})
        EXPECT_TRUE(parse(usage(R"("output_tokens":1,"x":)" + std::string(unread))).has_value())
            << unread;
    // Keys of unread fields too, and escapes in the keys that are read.
    EXPECT_TRUE(parse(usage(R"("output_tokens":1,"\ud83d":2)")).has_value());
    EXPECT_EQ(
        parse(assistant(R"({"id":"m","\u0075sage":{"output\u005ftokens":8}})"))->tokens.output, 8);
    EXPECT_TRUE(
        parse(R"({"x":{"type":"user"},"ty\u0070e":"assistant","timestamp":"2025-06-01T12:34:56Z",)"
              R"("message":{"id":"m","usage":{"output_tokens":1}}})")
            .has_value());
}

const Date noon = *parseISO8601("2026-03-10T12:00:00Z");

std::string line(const std::string& type, const std::string& payload) {
    return R"({"timestamp":"2026-03-10T12:00:00Z","type":")" + type + R"(","payload":)" + payload +
           "}";
}

std::string tokenCount(const std::string& rateLimits) {
    return line("event_msg",
                R"({"type":"token_count","info":null,"rate_limits":)" + rateLimits + "}");
}

UsageEvent usageOf(CodexLogParser& parser, const std::string& text) {
    return std::get<UsageEvent>(parser.parse(text).value().value);
}

ProviderLimits limitsOf(const std::string& text) {
    CodexLogParser parser;
    return std::get<ProviderLimits>(parser.parse(text).value().value);
}

TEST(CodexLogParser, CarriesSessionAndModelFromLineToLine) {
    CodexLogParser parser;
    const std::string record =
        line("token_usage_record", R"({"response_id":"r","session_id":"own","usage":{}})");
    EXPECT_EQ(usageOf(parser, record).model, "unknown");
    EXPECT_EQ(usageOf(parser, record).sessionID, "own");
    EXPECT_FALSE(parser.parse(line("session_meta", R"({"id":"S","cwd":"/"})")).has_value());
    EXPECT_FALSE(parser.parse(line("turn_context", R"({"model":"gpt-5-codex"})")).has_value());
    EXPECT_FALSE(parser.parse(line("turn_context", R"({"model":null})")).has_value());
    EXPECT_EQ(usageOf(parser, record).model, "gpt-5-codex");
    EXPECT_EQ(usageOf(parser, record).sessionID, "S");

    CodexLogParser later; // A second pass starts in the middle of the file, from the saved context.
    later.context = parser.context;
    EXPECT_EQ(usageOf(later, record).sessionID, "S");
}

TEST(CodexLogParser, ReadsUsage) {
    const auto read = [](const std::string& usage) {
        CodexLogParser parser;
        return usageOf(parser,
                       line("token_usage_record", R"({"response_id":"r","usage":)" + usage + "}"));
    };
    EXPECT_EQ(read(R"({"input_tokens":100,"cached_input_tokens":30,"cache_write_input_tokens":4,)"
                   R"("output_tokens":5,"reasoning_output_tokens":6})"),
              (UsageEvent{ProviderID::codex, "unknown", "", "r", noon, {70, 30, 4, 0, 5, 6}, {}}));
    EXPECT_EQ(read(R"({"input_tokens":100,"cached_input_tokens":120})").tokens,
              (TokenCounts{0, 120, 0, 0, 0, 0}));
    EXPECT_EQ(read(R"({"input_tokens":"7","output_tokens":2.0})").tokens,
              (TokenCounts{0, 0, 0, 0, 2, 0}));
    EXPECT_EQ(read("{}").tokens, TokenCounts()) << "a record of nothing is still a record";
}

TEST(CodexLogParser, ReadsLimitsAsOfTheirLine) {
    const ProviderLimits limits = limitsOf(tokenCount(
        R"({"primary":{"used_percent":42.5,"window_minutes":300,"resets_at":1773147600},)"
        R"("secondary":{"used_percent":7,"resets_at":1773147600000},)" // milliseconds
        R"("credits":{"has_credits":true,"unlimited":false,"balance":2.5},)"
        R"("plan_type":"plus"})"));
    const LimitSource then = LimitSource::local(noon);
    EXPECT_EQ(limits,
              (ProviderLimits{
                  "Plus",
                  {{"session", "Session", 0.425, 18000.0, dateFromUnixSeconds(1773147600), then},
                   {"weekly", "Weekly", 0.07, std::nullopt, std::nullopt, then}},
                  Credits{"Credits", 2.5, std::nullopt, std::nullopt, false},
                  ProviderStatus::ok,
                  noon}));
    const ProviderLimits endless =
        limitsOf(tokenCount(R"({"primary":{"used_percent":150},"credits":{"unlimited":true}})"));
    EXPECT_EQ(endless.windows[0].usedFraction, 1);
    EXPECT_TRUE(endless.credits->unlimited);
    const ProviderLimits bare = limitsOf(tokenCount(
        R"({"limit_id":"codex","primary":{"used_percent":1},"plan_type":"","credits":{"has_credits":false,"balance":0}})"));
    EXPECT_FALSE(bare.plan);
    EXPECT_FALSE(bare.credits) << "nobody who has none wants to read $0.00";
}

TEST(CodexLogParser, SkipsEverythingElse) {
    CodexLogParser parser;
    for (
        const std::string& text :
        {tokenCount(R"({"credits":{"unlimited":true}})"),
         tokenCount(R"({"primary":{"used_percent":"5"}})"), tokenCount("null"),
         tokenCount(R"({"limit_id":"codex_other","primary":{"used_percent":5}})"),
         line("event_msg",
              R"({"type":"agent_message","rate_limits":{"primary":{"used_percent":1}}})"),
         line("response_item", R"({"response_id":"r","usage":{}})"),
         line("token_usage_record", R"({"usage":{}})"),
         line("token_usage_record", R"({"response_id":"r"})"), line("token_usage_record", "[]"),
         std::string(
             R"({"type":"token_usage_record","timestamp":"soon","payload":{"response_id":"r","usage":{}}})"),
         std::string(R"({"type":"token_usage_record","payload":{"response_id":"r","usage":{}})"),
         std::string()})
        EXPECT_FALSE(parser.parse(text).has_value()) << text;
    EXPECT_TRUE(parser.context.empty());
    EXPECT_FALSE(parser.parse(line("session_meta", R"({"id":"S")")).has_value());
    EXPECT_TRUE(parser.context.empty()) << "a malformed line must not change the context";
}

TEST(GrokUsageParser, ReadsOneEventForEachModelOfEachTurn) {
    // The session's id may stand behind its turns, and a turn's number behind its usage.
    const std::vector<UsageEvent> events = GrokUsageParser::parse(
        R"({"turns":[{"modelUsage":{"grok-4":{"inputTokens":100,"cachedReadTokens":150,"cacheCreationTokens":3,)"
        R"("outputTokens":4,"reasoningTokens":5,"costUsdTicks":25000000000},"grok-code":{"inputTokens":10.0}},)"
        R"("turnNumber":3,"endedAt":"2026-03-10T12:00:00.5Z","x":"\ud83d"}],"sessionId":"abc"})");
    const Date end = noon + Seconds{0.5};
    EXPECT_THAT(
        events,
        ElementsAre(
            UsageEvent{
                ProviderID::grok, "grok-4", "abc", "abc#3#grok-4", end, {0, 150, 3, 0, 4, 5}, 2.5},
            UsageEvent{ProviderID::grok, "grok-code", "abc", "abc#3#grok-code", end, {10}, {}}));
}

TEST(GrokUsageParser, SkipsTurnsWithoutNumberOrEnd) {
    const std::vector<UsageEvent> events = GrokUsageParser::parse(
        R"({"sessionId":"s","turns":[{"turnNumber":1,"modelUsage":{"m":{}}},7,)"
        R"({"endedAt":"2026-03-10T12:00:00Z","modelUsage":{"m":{}}},)"
        R"({"turnNumber":2.5,"endedAt":"2026-03-10T12:00:00Z","modelUsage":{"m":{}}},)"
        R"({"turnNumber":"3","endedAt":"2026-03-10T12:00:00Z","modelUsage":{"m":{}}},)"
        R"({"turnNumber":4,"endedAt":"2026-03-10T12:00:00Z","modelUsage":{"m":[]}},)"
        R"({"turnNumber":9007199254740993.0,"endedAt":"2026-03-10T12:00:00Z","modelUsage":{"m":{}}}]})");
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].dedupKey, "s#9007199254740993#m");
}

} // namespace tokwatch::testing

#include "TokwatchCore/Ingestion/ClaudeLogParser.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <gtest/gtest.h>

#include <ranges>

namespace tokwatch {
namespace {

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
    struct Case {
        const char* usage;
        TokenCounts tokens;
    };
    for (
        const Case& c : {
            Case{R"("input_tokens":1,"cache_read_input_tokens":2,"output_tokens":3)",
                 {1, 2, 0, 0, 3, 0}},
            {R"("cache_creation_input_tokens":100)", {0, 0, 100, 0, 0, 0}},
            {R"("cache_creation_input_tokens":100,"cache_creation":{"ephemeral_1h_input_tokens":100})",
             {0, 0, 0, 100, 0, 0}},
            {R"("cache_creation":{"ephemeral_5m_input_tokens":7},"cache_creation_input_tokens":100)",
             {0, 0, 7, 0, 0, 0}},
            {R"("output_tokens":1,"cache_creation_input_tokens":100,"cache_creation":{})",
             {0, 0, 0, 0, 1, 0}},
            {R"("cache_creation_input_tokens":100,"cache_creation":null)", {0, 0, 100, 0, 0, 0}},
            {R"("output_tokens":9,"output_tokens_details":{"thinking_tokens":4,"x":[1]})",
             {0, 0, 0, 0, 9, 4}},
            {R"("output_tokens":9,"output_tokens_details":{})", {0, 0, 0, 0, 9, 0}},
            {R"("output_tokens":12.0,"input_tokens":3.99)", {3, 0, 0, 0, 12, 0}},
            {R"("output_tokens":1e2,"input_tokens":99999999999999999999e-5)",
             {999999999999999, 0, 0, 0, 100, 0}},
            {R"("output_tokens":9007199254740993.0,"input_tokens":0.00123E+4)",
             {12, 0, 0, 0, 9007199254740993, 0}},
            {R"("output_tokens":1,"input_tokens":1e99999999999999999999,"cache_read_input_tokens":5e-99999999999999999999)",
             {0, 0, 0, 0, 1, 0}},
            {R"("output_tokens":9223372036854775807.9,"cache_read_input_tokens":9.3e18)",
             {0, 0, 0, 0, 9223372036854775807, 0}},
            {R"("output_tokens":1,"input_tokens":null,"cache_read_input_tokens":"5")",
             {0, 0, 0, 0, 1, 0}},
            {R"("output_tokens":1,"input_tokens":99999999999999999999,"cache_read_input_tokens":true)",
             {0, 0, 0, 0, 1, 0}},
            {R"("output_tokens":3,"input_tokens":-2)", {-2, 0, 0, 0, 3, 0}},
        }) {
        const std::optional<UsageEvent> event = parse(usage(c.usage));
        ASSERT_TRUE(event.has_value()) << c.usage;
        EXPECT_EQ(event->tokens, c.tokens) << c.usage;
    }
}

TEST(ClaudeLogParser, FindsIdentityModelAndSession) {
    const std::string tokens = R"("usage":{"output_tokens":1})";
    EXPECT_EQ(parse(assistant("{" + tokens + "}", R"("requestId":"req_1",)"))->dedupKey, "req_1");
    EXPECT_EQ(parse(assistant(R"({"id":"m",)" + tokens + "}", R"("requestId":"req_1",)"))->dedupKey,
              "m");
    EXPECT_EQ(parse(assistant(R"({"id":7,)" + tokens + "}", R"("requestId":"req_1",)"))->dedupKey,
              "req_1");
    EXPECT_FALSE(parse(assistant("{" + tokens + "}")).has_value());
    EXPECT_EQ(parse(assistant(R"({"id":"msg_1","model":"claude-x",)" + tokens + "}")),
              (UsageEvent{ProviderID::claude,
                          "claude-x",
                          "s",
                          "msg_1",
                          *parseISO8601("2025-06-01T12:34:56.789Z"),
                          {0, 0, 0, 0, 1, 0},
                          {}}));
    const UsageEvent bare = parse(assistant(R"({"id":"m",)" + tokens + "}", "")).value();
    EXPECT_EQ(bare.model, "unknown");
    EXPECT_EQ(bare.sessionID, "");
    EXPECT_EQ(parse(assistant(R"({"id":"m\u0031\n","model":"\u00e9\ud83d\ude00",)" + tokens + "}"))
                  ->dedupKey,
              "m1\n");
}

TEST(ClaudeLogParser, SkipsWhatDoesNotCount) {
    const auto changed = [](const std::string& from, const std::string& to) {
        std::string line = usage(R"("output_tokens":1)");
        return line.replace(line.find(from), from.size(), to);
    };
    for (const std::string& line : {
             usage(R"("input_tokens":0,"output_tokens":0)"),
             usage(R"("output_tokens_details":{"thinking_tokens":4})"),
             usage(R"("input_tokens":-3,"output_tokens":2)"),
             assistant(R"({"id":"m","model":"<synthetic>","usage":{"output_tokens":1}})"),
             assistant(R"({"id":"m","usage":[1]})"),
             assistant(R"("text")"),
             changed("2025-06-01T", "2025-06-01 "),
             changed("timestamp", "time"),
             changed("assistant", "Assistant"),
             changed("assistant", "user"),
             changed("type", "kind"),
             std::string(R"([{"type":"assistant","usage":{}}])"),
             std::string("\"usage\""),
             std::string(),
         })
        EXPECT_FALSE(parse(line).has_value()) << line;
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

} // namespace
} // namespace tokwatch

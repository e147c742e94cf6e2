#include "TokwatchCore/Ingestion/CodexLogParser.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <gtest/gtest.h>

namespace tokwatch {
namespace {

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
    struct Case {
        const char* usage;
        TokenCounts tokens;
    };
    for (
        const Case& c : {
            Case{
                R"({"input_tokens":100,"cached_input_tokens":30,"cache_write_input_tokens":4,"output_tokens":5,)"
                R"("reasoning_output_tokens":6})",
                {70, 30, 4, 0, 5, 6}},
            {R"({"input_tokens":100,"cached_input_tokens":120})", {0, 120, 0, 0, 0, 0}},
            {R"({"input_tokens":"7","output_tokens":2.0})", {0, 0, 0, 0, 2, 0}},
            {"{}", {}}, // a record of nothing is still a record
        }) {
        CodexLogParser parser;
        const UsageEvent event =
            usageOf(parser, line("token_usage_record",
                                 R"({"response_id":"r","usage":)" + std::string(c.usage) + "}"));
        EXPECT_EQ(event,
                  (UsageEvent{ProviderID::codex, "unknown", "", "r", noon, c.tokens, std::nullopt}))
            << c.usage;
    }
}

TEST(CodexLogParser, ReadsLimitsAsOfTheirLine) {
    const ProviderLimits limits = limitsOf(tokenCount(
        R"({"primary":{"used_percent":42.5,"window_minutes":300,"resets_at":1773147600},)"
        R"("secondary":{"used_percent":7},"credits":{"has_credits":true,"unlimited":false,"balance":2.5},)"
        R"("plan_type":"plus"})"));
    ProviderLimits expected;
    expected.plan = "Plus";
    expected.windows = {
        {"session", "Session", 0.425, 18000.0, dateFromUnixSeconds(1773147600),
         LimitSource::local(noon)},
        {"weekly", "Weekly", 0.07, std::nullopt, std::nullopt, LimitSource::local(noon)}};
    expected.credits = Credits{"Credits", 2.5, std::nullopt, std::nullopt, false};
    expected.status = ProviderStatus::ok;
    expected.fetchedAt = noon;
    EXPECT_EQ(limits.windows[1].usedFraction, 7.0 / 100);
    EXPECT_EQ(limits, expected);
    EXPECT_EQ(limitsOf(tokenCount(R"({"primary":{"used_percent":150}})")).windows[0].usedFraction,
              1);
    EXPECT_EQ(limitsOf(tokenCount(R"({"secondary":{"used_percent":-5}})")).windows[0].usedFraction,
              0);
    EXPECT_TRUE(
        limitsOf(tokenCount(R"({"primary":{"used_percent":1},"credits":{"unlimited":true}})"))
            .credits->unlimited);
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

} // namespace
} // namespace tokwatch

#include "TokwatchCore/Ingestion/GrokUsageParser.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <gtest/gtest.h>

namespace tokwatch {
namespace {

TEST(GrokUsageParser, ReadsOneEventForEachModelOfEachTurn) {
    // The session's id may stand behind its turns, and a turn's number behind its usage.
    const std::vector<UsageEvent> events = GrokUsageParser::parse(
        R"({"turns":[{"modelUsage":{"grok-4":{"inputTokens":100,"cachedReadTokens":150,"cacheCreationTokens":3,)"
        R"("outputTokens":4,"reasoningTokens":5,"costUsdTicks":25000000000},"grok-code":{"inputTokens":10.0}},)"
        R"("turnNumber":3,"endedAt":"2026-03-10T12:00:00.5Z","x":"\ud83d"}],"sessionId":"abc"})");
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0], (UsageEvent{ProviderID::grok, "grok-4", "abc", "abc#3#grok-4",
                                     *parseISO8601("2026-03-10T12:00:00.5Z"),
                                     TokenCounts{0, 150, 3, 0, 4, 5}, 2.5}));
    EXPECT_EQ(events[1], (UsageEvent{ProviderID::grok, "grok-code", "abc", "abc#3#grok-code",
                                     *parseISO8601("2026-03-10T12:00:00.5Z"),
                                     TokenCounts{10, 0, 0, 0, 0, 0}, std::nullopt}));
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

TEST(GrokUsageParser, ReadsNothingFromAnotherDocument) {
    for (const char* document :
         {"", "{", "[]", R"({"sessionId":1,"turns":[]})", R"({"sessionId":"s"})",
          R"({"sessionId":"s","turns":{}})",
          R"({"sessionId":"s","turns":[{"turnNumber":1,"endedAt":"2026-03-10T12:00:00Z",)"
          R"("modelUsage":{"m":{}}}])"})
        EXPECT_TRUE(GrokUsageParser::parse(document).empty()) << document;
}

} // namespace
} // namespace tokwatch

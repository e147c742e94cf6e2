#include "TokwatchCore/Records/RecordCoding.h"

#include "Tests/Support/Testing.h"

#include <limits>

namespace tokwatch::testing {

constexpr DateCoding stored = DateCoding::secondsSince2001;
constexpr double epoch2001 = 978307200;

Date after2001(double seconds) {
    return dateFromUnixSeconds(epoch2001 + seconds);
}

template<typename Decode>
std::string failureOf(const char* text, Decode decode) {
    try {
        decode(parseJson(text));
    } catch (const DecodingError& error) {
        return error.what();
    }
    return "decoded";
}

ProviderLimits fullLimits() {
    return {"Max 5x",
            {{"session", "Session", 0.25, 18000.0, after2001(100.5), LimitSource::live()},
             {"weekly", "Weekly", 1, std::nullopt, std::nullopt, LimitSource::local(after2001(7))}},
            Credits{"Extra usage", std::nullopt, 12.34, 50.0, false},
            ProviderStatus::rateLimited,
            after2001(806457600.123456)};
}

TEST(RecordCoding, WritesKeysInOrderAndLeavesAbsentOnesOut) {

    EXPECT_EQ(jsonText(encode(LimitWindow{"session", "Session", 0.5, {}, {}, LimitSource::live()},
                              stored)),
              R"({"id":"session","label":"Session","usedFraction":0.5,"source":{"live":{}}})");
    EXPECT_EQ(jsonText(encode(LimitSource::stale(after2001(5)), stored)),
              R"({"stale":{"asOf":5.0}})");
    EXPECT_EQ(jsonText(encode(LimitSource::local(after2001(5)), DateCoding::iso8601)),
              R"({"local":{"asOf":"2001-01-01T00:00:05Z"}})");
    EXPECT_EQ(jsonText(encode(ProviderStatus::signInNeeded)), R"({"signInNeeded":{}})");
    EXPECT_EQ(jsonText(encode(FileCursor{"/a", 7, 9, {{"model", "m"}, {"provider", "codex"}}})),
              R"({"path":"/a","inode":7,"offset":9,"context":{"model":"m","provider":"codex"}})");
}

TEST(RecordCoding, RefusesMissingKeysNullsAndWrongTypes) {
    struct Case {
        void (*decode)(const Json&);
        std::vector<std::string> texts;
        const char* says = "";
    };
    const auto source = [](const Json& json) { decode<LimitSource>(json, stored); };
    const auto status = [](const Json& json) { decode<ProviderStatus>(json); };
    const auto tokens = [](const Json& json) { decode<TokenCounts>(json); };
    const auto cursor = [](const Json& json) { decode<FileCursor>(json); };
    const auto limits = [](const Json& json) { decode<ProviderLimits>(json, stored); };
    const std::string counts =
        R"({"uncachedInput":1,"cacheRead":2,"cacheWrite5m":3,"cacheWrite1h":4,"output":5)";
    std::vector<std::string> wrongCounts;
    for (const char* value : {"null", "\"5\"", "1.5", "true", "9223372036854775808", "[]"})
        wrongCounts.push_back(counts + ",\"reasoning\":" + value + "}");
    const char* const expectsOne = "Invalid number of keys found, expected one.";
    const Case cases[]{
        {source, {"{}", R"({"live":{},"stale":{"asOf":0}})"}, expectsOne},
        {status, {"{}", R"({"ok":{},"unavailable":{}})"}, expectsOne},
        {source, {R"({"alive":{}})", R"({"local":{}})"}},
        {status, {R"({"OK":{}})", R"("ok")"}},
        {tokens, {counts + "}"}, "reasoning"},
        {tokens, wrongCounts},
        {cursor,
         {R"({"path":"/a","inode":-1,"offset":0,"context":{}})",
          R"({"path":"/a","inode":1,"offset":0})",
          R"({"path":"/a","inode":1,"offset":0,"context":{"a":1}})", "[]", "7"}},
        {limits,
         {R"({"windows":null,"status":{"ok":{}},"fetchedAt":0})",
          R"({"windows":[],"status":null,"fetchedAt":0})", R"({"windows":[],"status":{"ok":{}}})",
          R"({"windows":[],"plan":5,"status":{"ok":{}},"fetchedAt":0})"}},
        {[](const Json& json) { decode<Date>(json, DateCoding::iso8601); },
         {"5"},
         "Expected a string."},
        {[](const Json&) {}, {"{", std::string(65, '[') + std::string(65, ']')}}};
    EXPECT_NO_THROW(parseJson(std::string(64, '[') + std::string(64, ']')));
    for (const Case& each : cases) {
        for (const std::string& text : each.texts) {
            const std::string failure = failureOf(text.c_str(), each.decode);
            EXPECT_NE(failure, "decoded") << text;
            EXPECT_NE(failure.find(each.says), std::string::npos) << failure;
        }
    }
}

TEST(RecordCoding, RefusesLimitsThatNoSurfaceCanShow) {
    const auto isRefused = [](auto change) {
        ProviderLimits limits = fullLimits();
        change(limits);
        return failureOf(jsonText(encode(limits, stored)).c_str(), [](const Json& json) {
                   decode<ProviderLimits>(json, stored);
               }) != "decoded";
    };
    for (const double fraction : {1e17, -1e17, 1e300})
        EXPECT_TRUE(isRefused([=](auto& limits) { limits.windows[0].usedFraction = fraction; }));
    const std::string novel(2000, 'x');
    EXPECT_TRUE(isRefused([&](auto& limits) { limits.windows[1].label = novel; }));
    EXPECT_TRUE(isRefused([&](auto& limits) { limits.plan = novel; }));
    EXPECT_TRUE(isRefused([](auto& limits) { limits.windows.resize(33, limits.windows[0]); }));
    EXPECT_FALSE(isRefused([](auto& limits) {
        limits.windows.resize(32, limits.windows[0]);
        limits.windows[0].usedFraction = 12.5;
    }));
}

TEST(ProviderLimits, MarksLiveAndLocalWindowsStale) {
    ProviderLimits limits = fullLimits();
    limits.windows.push_back({"old", "Old", 0, {}, {}, LimitSource::stale(after2001(3))});
    const ProviderLimits stale = limits.markedStale();
    EXPECT_EQ(stale.windows[0].source, LimitSource::stale(limits.fetchedAt));
    EXPECT_EQ(stale.windows[1].source, LimitSource::stale(limits.fetchedAt));
    EXPECT_EQ(stale.windows[2].source, LimitSource::stale(after2001(3)));
    limits.windows[0].source = stale.windows[0].source;
    limits.windows[1].source = stale.windows[1].source;
    EXPECT_EQ(stale, limits);
}

constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();

TEST(TokenCountsDeathTest, StopsTheProgramRatherThanWrap) {
    const TokenCounts full{most, 0, most, 1, 0, 0};
    const auto stops = ExitedWithCode(1);
    EXPECT_EXIT((void)(full + full), stops,
                "tokwatch: fatal: a sum of token counts exceeds 64 bits");
    EXPECT_EXIT((void)full.total(), stops, "exceeds 64 bits");
    EXPECT_EXIT((void)full.cacheWrite(), stops, "exceeds 64 bits");
}

} // namespace tokwatch::testing

#include "Tests/Support/Testing.h"
#include "TokwatchCore/Store/PriceTable.h"
#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Store/UsageSummary.h"
#include "TokwatchCore/Support/ISO8601.h"

namespace tokwatch::testing {

const Date afternoon = *parseISO8601("2026-11-24T15:00:00Z");
constexpr const char* today = "2026-11-24";
/// The start of a day before it.
Date dayAgo(int days) {
    return *parseISO8601("2026-11-24T00:00:00Z") - Seconds{days * 86'400.0};
}

PriceTable prices() {
    return PriceTable(
        {{"a", {1, 2, 0.5, 1, 1, {}, "", ""}}, {"b", {1, 2, 0.5, 1, 1, "a", "", ""}}});
}

DailyRow row(ProviderID provider, const char* model, const char* day, std::int64_t millions,
             std::optional<double> reported = {}) {
    return {provider, model, day, TokenCounts{millions * 1'000'000, 0, 0, 0, 0, 5}, reported};
}

UsageSummary summarizeDays(std::int64_t days, const std::vector<DailyRow>& rows,
                           const std::vector<SessionCount>& sessions = {}) {
    return summarize(days, SummaryWindow(days, afternoon, Calendar::utc()), rows, sessions,
                     prices());
}

std::vector<std::string> modelNames(const UsageSummary& summary) {
    std::vector<std::string> names;
    for (const UsageSummary::ModelRow& model : summary.models)
        names.push_back(model.model);
    return names;
}

TEST(UsageSummary, AddsUpToolsModelsAndDays) {
    const UsageSummary summary = summarizeDays(
        3,
        {row(ProviderID::codex, "a", today, 3), row(ProviderID::codex, "b", "2026-11-22", 1),
         row(ProviderID::grok, "x", today, 4, 8.0), row(ProviderID::claude, "y", "2026-11-22", 2)},
        {{ProviderID::codex, "2026-11-24", 2}, {ProviderID::cursor, "2026-11-23", 1}});
    EXPECT_EQ(summary.totalCostUSD, 12);
    EXPECT_EQ(summary.sessions, 3);
    EXPECT_TRUE(summary.hasUnknownPrices);
    EXPECT_EQ(summary.tokens, (TokenCounts{10'000'000, 0, 0, 0, 0, 20}));
    EXPECT_EQ(summary.costByType, (CostBreakdown{4, 0, 0, 0, 8}));
    EXPECT_EQ(summary.windowEnd, dayAgo(0));

    using Tool = UsageSummary::Tool;
    EXPECT_THAT(summary.tools,
                ElementsAre(Tool{ProviderID::grok, 0, 4'000'000, 8, 8.0 / 12, 0.4, true},
                            Tool{ProviderID::codex, 2, 4'000'000, 4, 4.0 / 12, 0.4, true},
                            Tool{ProviderID::claude, 0, 2'000'000, 0, 0, 0.2, false},
                            Tool{ProviderID::cursor, 1, 0, 0, 0, 0, false}));

    // Zero-filled, by provider in declaration order whatever the order of the tools.
    ASSERT_EQ(summary.daily.size(), 12U);
    EXPECT_EQ(summary.daily[0].provider, ProviderID::claude);
    EXPECT_EQ(summary.daily[5],
              (UsageSummary::DayPoint{dayAgo(0), ProviderID::codex, 3'000'000, 3}));
    EXPECT_EQ(summary.daily[4].tokens, 0);

    EXPECT_THAT(modelNames(summary), ElementsAre("x", "a", "b", "y"));
    EXPECT_FALSE(summary.models[3].costUSD.has_value());
    EXPECT_EQ(summary.models[3].tokenShare, 0.2);
    EXPECT_TRUE(summary.models[2].approximate);

    using DayRow = UsageSummary::DayRow;
    EXPECT_THAT(summary.perDay,
                ElementsAre(DayRow{dayAgo(0), 11, 7'000'000, 2}, DayRow{dayAgo(1), 0, 0, 1},
                            DayRow{dayAgo(2), 1, 3'000'000, 0}));
}

TEST(UsageSummary, AddsUpEveryKindOfTokenAndWhatCachesSaved) {
    DailyRow mixed = row(ProviderID::claude, "a", today, 1);
    mixed.tokens = {1'000'000, 2'000'000, 3'000'000, 4'000'000, 5'000'000, 6};
    const UsageSummary summary = summarizeDays(2, {mixed, mixed});
    EXPECT_EQ(summary.tokens,
              (TokenCounts{2'000'000, 4'000'000, 6'000'000, 8'000'000, 10'000'000, 12}));
    EXPECT_EQ(summary.models[0].tokens, summary.tokens);
    EXPECT_EQ(summary.costByType, (CostBreakdown{2, 2, 14, 20, 0}));
    EXPECT_EQ(summary.cacheSavingsUSD, 2);
    EXPECT_EQ(summary.tools[0].tokens, 30'000'000);

    DailyRow single = row(ProviderID::claude, "a", today, 0);
    single.tokens.output = 1;
    EXPECT_EQ(summarizeDays(1, {single}).tools[0].tokenShare, 1);
}

TEST(UsageSummary, OrdersEqualToolsAndModels) {
    const UsageSummary summary = summarizeDays(
        1, {row(ProviderID::grok, "a", today, 1), row(ProviderID::codex, "b", today, 1),
            row(ProviderID::codex, "a", today, 1), row(ProviderID::claude, "z", today, 9),
            row(ProviderID::cursor, "a", today, 2), row(ProviderID::grok, "small", today, 1, 1.0),
            row(ProviderID::claude, "large", today, 2, 1.0)});
    EXPECT_THAT(modelNames(summary), ElementsAre("a", "large", "a", "b", "a", "small", "z"));
    const auto of = [](ProviderID provider) {
        return Field(&UsageSummary::Tool::provider, provider);
    };
    EXPECT_THAT(summary.tools, ElementsAre(of(ProviderID::codex), of(ProviderID::grok),
                                           of(ProviderID::cursor), of(ProviderID::claude)));
}

TEST(UsageSummary, StaysApproximateOnceAnyRowIs) {
    const UsageSummary summary = summarizeDays(
        2, {row(ProviderID::grok, "x", "2026-11-23", 1, 0.25), row(ProviderID::grok, "x", today, 1),
            row(ProviderID::grok, "a", today, 1), row(ProviderID::claude, "a", today, 1)});
    for (const UsageSummary::Tool& tool : summary.tools)
        EXPECT_EQ(tool.approximate, tool.provider == ProviderID::grok) << rawValue(tool.provider);
    for (const UsageSummary::ModelRow& model : summary.models)
        EXPECT_EQ(model.approximate, model.model == "x") << model.model;
    EXPECT_EQ(summary.models.back().costUSD, 0.25) << "the day without a report adds tokens only";
    EXPECT_EQ(summarizeDays(1, {row(ProviderID::claude, "y", today, 1)}).tools[0].costShare, 0);
}

TEST(SummaryWindow, HoldsExactlyTheDaysUpToToday) {
    // A day of 23 hours in the window; one without a midnight; one that never was.
    for (const auto& [zone, moment, days, firstKey, todayKey, count] :
         {std::tuple{"UTC", "2026-03-10T23:59:59Z", -7, "2026-03-10", "2026-03-10", 1U},
          {"Europe/Berlin", "2026-03-30T22:30:00Z", 30, "2026-03-02", "2026-03-31", 30U},
          {"Africa/Cairo", "2026-04-24T12:00:00Z", 30, "2026-03-26", "2026-04-24", 30U},
          {"America/Sao_Paulo", "2018-11-20T12:00:00Z", 30, "2018-10-22", "2018-11-20", 30U},
          {"Pacific/Apia", "2011-12-31T12:00:00Z", 4, "2011-12-29", "2012-01-01", 3U}}) {
        SCOPED_TRACE(zone);
        const Calendar calendar = Calendar::named(zone).value();
        const SummaryWindow window(days, *parseISO8601(moment), calendar);
        EXPECT_EQ(window.firstKey(), firstKey);
        EXPECT_EQ(window.todayKey, todayKey);
        EXPECT_EQ(window.days.back(), window.today);
        EXPECT_EQ(window.keys.back(), window.todayKey);
        ASSERT_THAT(window.days, SizeIs(count));
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_EQ(calendar.dayKey(window.days[i]), window.keys.at(i));
            EXPECT_EQ(calendar.startOfDay(window.days[i]), window.days[i]);
        }
    }
}

TEST(UsageSummary, OfAStoreLeavesOutWhatLiesOutsideTheWindow) {
    UsageStore store(":memory:");
    const Calendar utc = Calendar::utc();
    const auto event = [](const char* key, const char* session, const char* when) {
        return UsageEvent{ProviderID::claude,         "a", session, key, *parseISO8601(when),
                          {1'000'000, 0, 0, 0, 0, 0}, {}};
    };
    const std::vector<UsageEvent> events{
        event("1", "old", "2026-11-22T23:59:59Z"), event("2", "old", "2026-11-23T00:00:00Z"),
        event("3", "new", "2026-11-24T23:59:59Z"), event("4", "new", "2026-11-25T00:00:00Z")};
    store.ingest(events, utc);
    const UsageSummary summary = store.summary(2, afternoon, utc, prices());
    EXPECT_EQ(summary.tokens.total(), 2'000'000);
    EXPECT_EQ(summary.sessions, 1) << "a session belongs to its first day alone";
}

TEST(UsageSummary, HasItsFieldsInTheirOrderAsJsonAndReadsThemBack) {
    const Date day = dayAgo(0);
    UsageSummary summary;
    summary.days = 30;
    summary.windowEnd = day;
    summary.totalCostUSD = 12.345678901234567;
    summary.sessions = 3;
    summary.tools = {{ProviderID::codex, 3, 9'007'199'254'740'993, 12.5, 1, 0.1, true}};
    summary.daily = {{day, ProviderID::codex, 5, 0.1}};
    summary.models = {
        {ProviderID::claude, "a \"b\" ü", std::nullopt, 0.5, 0.25, {6, 5, 4, 3, 2, 1}, true}};
    summary.perDay = {{day, 0.1, 5, 2}};
    summary.tokens = {1, 2, 3, 4, 5, 6};
    summary.costByType = {1, 2, 3, 4, 5};
    summary.cacheSavingsUSD = -0.5;
    summary.hasUnknownPrices = true;
    // A model without a price leaves the cost out, so that nobody reads it as free.
    EXPECT_EQ(
        jsonText(encode(summary, DateCoding::iso8601)),
        R"({"days":30,"windowEnd":"2026-11-24T00:00:00Z","totalCostUSD":12.345678901234567,"sessions":3,)"
        R"("tools":[{"provider":"codex","sessions":3,"tokens":9007199254740993,"costUSD":12.5,"costShare":1.0,)"
        R"("tokenShare":0.1,"approximate":true}],)"
        R"("daily":[{"day":"2026-11-24T00:00:00Z","provider":"codex","tokens":5,"costUSD":0.1}],)"
        R"("models":[{"provider":"claude","model":"a \"b\" ü","costShare":0.5,"tokenShare":0.25,"tokens":{)"
        R"("uncachedInput":6,"cacheRead":5,"cacheWrite5m":4,"cacheWrite1h":3,"output":2,"reasoning":1},"approximate":true}],)"
        R"("perDay":[{"day":"2026-11-24T00:00:00Z","costUSD":0.1,"tokens":5,"sessions":2}],)"
        R"("tokens":{"uncachedInput":1,"cacheRead":2,"cacheWrite5m":3,"cacheWrite1h":4,"output":5,"reasoning":6},)"
        R"("costByType":{"input":1.0,"cacheRead":2.0,"cacheWrite":3.0,"output":4.0,"other":5.0},)"
        R"("cacheSavingsUSD":-0.5,"hasUnknownPrices":true})");
    summary.models[0].costUSD = 1.5;

    for (const DateCoding dates : {DateCoding::iso8601, DateCoding::secondsSince2001})
        EXPECT_EQ(decode<UsageSummary>(parseJson(jsonText(encode(summary, dates))), dates),
                  summary);
}

ModelPrice price(double input) {
    return {input, 50, 1, 12.5, 20, {}, "test", "2026-01-01"};
}

TEST(PriceTable, FindsExactNamesAndDatedOnes) {
    const PriceTable table(
        {{"claude-x", price(10)}, {"claude-x-20250101", price(7)}, {"-20250101", price(3)}});
    EXPECT_EQ(table.price("claude-x")->input, 10);
    EXPECT_EQ(table.price("claude-x-20250101")->input, 7);
    EXPECT_EQ(table.price("claude-x-20250929")->input, 10);
    EXPECT_EQ(table.price("-20250101")->input, 3);
    for (const char* unknown :
         {"Claude-x", "claude-x-2025092", "claude-x-202509290", "claude-x-20250929-beta",
          "claude-x20250929", "claude-x-turbo-v2", "claude", "-20250102", "", "20250101"})
        EXPECT_EQ(table.price(unknown), nullptr) << unknown;
}

TEST(BundledPrices, ArePlausibleAndSaid) {
    const PriceTable table = PriceTable::bundled();
    ASSERT_GE(table.models().size(), 100U);
    for (const char* name : {"claude-opus-4-1-20250805", "gpt-5-codex", "grok-code-fast-1"})
        EXPECT_NE(table.price(name), nullptr) << name;
    for (const auto& [name, p] : table.models()) {
        EXPECT_TRUE(0 < p.cacheRead && p.cacheRead <= p.input && p.input <= p.cacheWrite5m &&
                    p.cacheWrite5m <= p.cacheWrite1h && p.cacheWrite1h <= 2 * p.input &&
                    p.input <= p.output && p.output <= 1000 && !p.source.empty() &&
                    p.asOf.size() == 10)
            << name;
        if (!p.proxyFor) continue;
        ASSERT_TRUE(table.models().contains(*p.proxyFor)) << name;
        EXPECT_FALSE(table.models().at(*p.proxyFor).proxyFor) << name << "'s lender borrows itself";
    }
}

} // namespace tokwatch::testing

#include "TokwatchCore/Store/UsageStore.h"
#include "TokwatchCore/Store/UsageSummary.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <limits>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::ExitedWithCode;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const Date now = *parseISO8601("2026-11-24T15:00:00Z");

PriceTable prices() {
    return PriceTable(
        {{"a", {1, 2, 0.5, 1, 1, {}, "", ""}}, {"b", {1, 2, 0.5, 1, 1, "a", "", ""}}});
}

DailyRow row(ProviderID provider, const char* model, const char* day, std::int64_t millions,
             std::optional<double> reported = {}) {
    return {provider, model, day, TokenCounts{millions * 1'000'000, 0, 0, 0, 0, 5}, reported};
}

UsageSummary summarizeDays(std::int64_t days, const std::vector<DailyRow>& rows,
                           const std::vector<SessionCount>& sessions = {},
                           const Calendar& calendar = Calendar::utc()) {
    return summarize(days, SummaryWindow(days, now, calendar), rows, sessions, prices());
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
        {row(ProviderID::codex, "a", "2026-11-24", 3), row(ProviderID::codex, "b", "2026-11-22", 1),
         row(ProviderID::grok, "x", "2026-11-24", 4, 8.0),
         row(ProviderID::claude, "y", "2026-11-22", 2)},
        {{ProviderID::codex, "2026-11-24", 2}, {ProviderID::cursor, "2026-11-23", 1}});
    EXPECT_EQ(summary.totalCostUSD, 12);
    EXPECT_EQ(summary.sessions, 3);
    EXPECT_TRUE(summary.hasUnknownPrices);
    EXPECT_EQ(summary.tokens, (TokenCounts{10'000'000, 0, 0, 0, 0, 20}));
    EXPECT_EQ(summary.costByType, (CostBreakdown{4, 0, 0, 0, 8}));
    EXPECT_EQ(summary.windowEnd, *parseISO8601("2026-11-24T00:00:00Z"));

    using Tool = UsageSummary::Tool;
    EXPECT_THAT(summary.tools,
                ElementsAre(Tool{ProviderID::grok, 0, 4'000'000, 8, 8.0 / 12, 0.4, true},
                            Tool{ProviderID::codex, 2, 4'000'000, 4, 4.0 / 12, 0.4, true},
                            Tool{ProviderID::claude, 0, 2'000'000, 0, 0, 0.2, false},
                            Tool{ProviderID::cursor, 1, 0, 0, 0, 0, false}));

    // Zero-filled, by provider in declaration order whatever the order of the tools.
    ASSERT_EQ(summary.daily.size(), 12U);
    EXPECT_EQ(summary.daily[0].provider, ProviderID::claude);
    EXPECT_EQ(summary.daily[5], (UsageSummary::DayPoint{*parseISO8601("2026-11-24T00:00:00Z"),
                                                        ProviderID::codex, 3'000'000, 3}));
    EXPECT_EQ(summary.daily[4].tokens, 0);

    EXPECT_THAT(modelNames(summary), ElementsAre("x", "a", "b", "y"));
    EXPECT_FALSE(summary.models[3].costUSD.has_value());
    EXPECT_EQ(summary.models[3].tokenShare, 0.2);
    EXPECT_TRUE(summary.models[2].approximate);

    using DayRow = UsageSummary::DayRow;
    EXPECT_THAT(summary.perDay,
                ElementsAre(DayRow{*parseISO8601("2026-11-24T00:00:00Z"), 11, 7'000'000, 2},
                            DayRow{*parseISO8601("2026-11-23T00:00:00Z"), 0, 0, 1},
                            DayRow{*parseISO8601("2026-11-22T00:00:00Z"), 1, 3'000'000, 0}));
}

TEST(UsageSummary, AddsUpEveryKindOfTokenAndWhatCachesSaved) {
    DailyRow mixed = row(ProviderID::claude, "a", "2026-11-24", 1);
    mixed.tokens = {1'000'000, 2'000'000, 3'000'000, 4'000'000, 5'000'000, 6};
    const UsageSummary summary = summarizeDays(2, {mixed, mixed});
    EXPECT_EQ(summary.tokens,
              (TokenCounts{2'000'000, 4'000'000, 6'000'000, 8'000'000, 10'000'000, 12}));
    EXPECT_EQ(summary.models[0].tokens, summary.tokens);
    EXPECT_EQ(summary.costByType, (CostBreakdown{2, 2, 14, 20, 0}));
    EXPECT_EQ(summary.cacheSavingsUSD, 2);
    EXPECT_EQ(summary.tools[0].tokens, 30'000'000);

    DailyRow single = row(ProviderID::claude, "a", "2026-11-24", 0);
    single.tokens.output = 1;
    EXPECT_EQ(summarizeDays(1, {single}).tools[0].tokenShare, 1);
}

TEST(UsageSummary, OrdersEqualModels) {
    EXPECT_THAT(
        modelNames(summarizeDays(1, {row(ProviderID::grok, "a", "2026-11-24", 1),
                                     row(ProviderID::codex, "b", "2026-11-24", 1),
                                     row(ProviderID::codex, "a", "2026-11-24", 1),
                                     row(ProviderID::claude, "z", "2026-11-24", 9),
                                     row(ProviderID::cursor, "a", "2026-11-24", 1),
                                     row(ProviderID::grok, "small", "2026-11-24", 1, 1.0),
                                     row(ProviderID::grok, "large", "2026-11-24", 2, 1.0)})),
        ElementsAre("large", "a", "b", "a", "a", "small", "z"));
}

TEST(UsageSummary, OfNothingIsEmpty) {
    for (const std::int64_t days : {-3, 0, 1}) {
        const UsageSummary summary = summarizeDays(days, {});
        EXPECT_EQ(summary.days, 1);
        EXPECT_THAT(summary.tools, IsEmpty());
        EXPECT_THAT(summary.daily, IsEmpty());
        EXPECT_THAT(summary.perDay, IsEmpty());
        EXPECT_FALSE(summary.hasUnknownPrices);
    }
    EXPECT_EQ(summarizeDays(1, {row(ProviderID::claude, "y", "2026-11-24", 1)}).tools[0].costShare,
              0);
}

TEST(SummaryWindow, HoldsExactlyTheDaysUpToToday) {
    struct Case {
        const char* zone;
        const char* now;
        std::int64_t days;
        const char* firstKey;
        const char* todayKey;
        const char* todayStart;
        std::size_t count;
    };
    const std::vector<Case> cases{
        {"UTC", "2026-03-10T12:00:00Z", 1, "2026-03-10", "2026-03-10", "2026-03-10T00:00:00Z", 1},
        {"UTC", "2026-03-10T00:00:00Z", 0, "2026-03-10", "2026-03-10", "2026-03-10T00:00:00Z", 1},
        {"UTC", "2026-03-10T23:59:59Z", -7, "2026-03-10", "2026-03-10", "2026-03-10T00:00:00Z", 1},
        {"UTC", "2024-03-01T12:00:00Z", 2, "2024-02-29", "2024-03-01", "2024-03-01T00:00:00Z", 2},
        {"UTC", "2026-03-10T12:00:00Z", 90, "2025-12-11", "2026-03-10", "2026-03-10T00:00:00Z", 90},
        // The same moment is another day elsewhere.
        {"Asia/Tokyo", "2026-03-10T15:00:00Z", 2, "2026-03-10", "2026-03-11",
         "2026-03-10T15:00:00Z", 2},
        {"America/Los_Angeles", "2026-03-11T06:59:59Z", 2, "2026-03-09", "2026-03-10",
         "2026-03-10T07:00:00Z", 2},
        // A day of 23 hours in the window, and one of 25.
        {"Europe/Berlin", "2026-03-30T21:30:00Z", 30, "2026-03-01", "2026-03-30",
         "2026-03-29T22:00:00Z", 30},
        {"Europe/Berlin", "2026-10-26T23:30:00Z", 30, "2026-09-28", "2026-10-27",
         "2026-10-26T23:00:00Z", 30},
        // Clocks go from 0:00 to 1:00: the day has no midnight and begins at one.
        {"Africa/Cairo", "2026-04-24T12:00:00Z", 30, "2026-03-26", "2026-04-24",
         "2026-04-23T22:00:00Z", 30},
        {"Africa/Cairo", "2026-04-30T22:30:00Z", 30, "2026-04-02", "2026-05-01",
         "2026-04-30T21:00:00Z", 30},
        {"America/Sao_Paulo", "2018-11-05T01:00:00Z", 30, "2018-10-06", "2018-11-04",
         "2018-11-04T03:00:00Z", 30},
        // The island skipped 30 December 2011: that day never was.
        {"Pacific/Apia", "2011-12-31T12:00:00Z", 4, "2011-12-29", "2012-01-01",
         "2011-12-31T10:00:00Z", 3},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(std::string(each.zone) + " " + each.now + " " + std::to_string(each.days));
        const Calendar calendar = Calendar::named(each.zone).value();
        const SummaryWindow window(each.days, *parseISO8601(each.now), calendar);
        EXPECT_THAT(window.days, SizeIs(each.count));
        EXPECT_EQ(window.firstKey(), each.firstKey);
        EXPECT_EQ(window.todayKey, each.todayKey);
        EXPECT_EQ(formatISO8601(window.today), each.todayStart);
        ASSERT_THAT(window.keys, SizeIs(window.days.size()));
        EXPECT_EQ(window.days.back(), window.today);
        EXPECT_EQ(window.keys.back(), window.todayKey);
        EXPECT_TRUE(std::ranges::is_sorted(window.keys, std::ranges::less_equal()));
        for (std::size_t i = 0; i < window.days.size(); ++i) {
            EXPECT_EQ(calendar.dayKey(window.days[i]), window.keys[i]);
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
    const UsageSummary summary = store.summary(2, now, utc, prices());
    EXPECT_EQ(summary.tokens.total(), 2'000'000);
    EXPECT_EQ(summary.sessions, 1) << "a session belongs to its first day alone";
}

TEST(UsageSummary, OrdersEqualToolsAsDeclared) {
    const UsageSummary summary = summarizeDays(1, {row(ProviderID::cursor, "a", "2026-11-24", 1),
                                                   row(ProviderID::grok, "a", "2026-11-24", 2),
                                                   row(ProviderID::codex, "a", "2026-11-24", 1),
                                                   row(ProviderID::claude, "a", "2026-11-24", 1)});
    std::vector<ProviderID> tools;
    for (const UsageSummary::Tool& tool : summary.tools)
        tools.push_back(tool.provider);
    EXPECT_THAT(tools, ElementsAre(ProviderID::grok, ProviderID::claude, ProviderID::codex,
                                   ProviderID::cursor));
}

TEST(UsageSummary, StaysApproximateOnceAnyRowIs) {
    const UsageSummary summary =
        summarizeDays(2, {row(ProviderID::grok, "x", "2026-11-23", 1, 0.25),
                          row(ProviderID::grok, "x", "2026-11-24", 1),
                          row(ProviderID::grok, "a", "2026-11-24", 1),
                          row(ProviderID::claude, "a", "2026-11-24", 1)});
    for (const UsageSummary::Tool& tool : summary.tools)
        EXPECT_EQ(tool.approximate, tool.provider == ProviderID::grok) << rawValue(tool.provider);
    for (const UsageSummary::ModelRow& model : summary.models)
        EXPECT_EQ(model.approximate, model.model == "x") << model.model;
    EXPECT_EQ(summary.models.back().costUSD, 0.25); // the day without a report adds tokens only
    EXPECT_TRUE(summary.hasUnknownPrices);
}

TEST(UsageSummary, StopsTheProgramWhenASumDoesNotFit) {
    DailyRow most = row(ProviderID::claude, "a", "2026-11-24", 0);
    most.tokens.cacheRead = std::numeric_limits<std::int64_t>::max();
    EXPECT_EXIT(summarizeDays(1, {most, row(ProviderID::codex, "a", "2026-11-24", 1)}),
                ExitedWithCode(1), "fatal: .*\\(codex, a, 2026-11-24\\)");
}

} // namespace
} // namespace tokwatch

#include "ISO8601.h"
#include "UsageStore.h"
#include "UsageSummary.h"

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

TEST(UsageSummary, CoversExactlyItsDays) {
    struct Case {
        const char* zone;
        const char* moment;
        const char* first;
        const char* last;
    };
    for (const Case& c :
         {Case{"UTC", "2026-11-24T15:00:00Z", "2026-10-26", "2026-11-24"},
          {"Europe/Berlin", "2026-04-10T22:30:00Z", "2026-03-13", "2026-04-11"},
          {"America/Sao_Paulo", "2018-11-05T01:00:00Z", "2018-10-06", "2018-11-04"},
          {"America/New_York", "2026-11-02T04:30:00Z", "2026-10-03", "2026-11-01"}}) {
        const SummaryWindow window(30, *parseISO8601(c.moment), Calendar::named(c.zone).value());
        EXPECT_EQ(window.days.size(), 30U) << c.zone;
        EXPECT_EQ(window.firstKey(), c.first) << c.zone;
        EXPECT_EQ(window.todayKey, c.last) << c.zone;
        EXPECT_EQ(window.keys.back(), c.last) << c.zone;
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

TEST(UsageSummary, ReadsBackWhatItWrote) {
    const UsageSummary summary = summarizeDays(
        3,
        {row(ProviderID::codex, "a", "2026-11-24", 3), row(ProviderID::grok, "x", "2026-11-23", 4)},
        {{ProviderID::codex, "2026-11-24", 2}});
    const Json json = encode(summary, DateCoding::iso8601);
    EXPECT_EQ(decodeUsageSummary(parseJson(jsonText(json)), DateCoding::iso8601), summary);
    EXPECT_EQ(json["windowEnd"], "2026-11-24T00:00:00Z");
    EXPECT_FALSE(json["models"][1].contains("costUSD"));
    for (const auto& [key, value] : json.items()) {
        Json without = json;
        without.erase(key);
        EXPECT_THROW(decodeUsageSummary(without, DateCoding::iso8601), DecodingError) << key;
        without[key] = nullptr;
        EXPECT_THROW(decodeUsageSummary(without, DateCoding::iso8601), DecodingError) << key;
    }
}

} // namespace
} // namespace tokwatch

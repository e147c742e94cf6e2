#include "TokwatchCore/Store/UsageSummary.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <gmock/gmock.h>

#include <functional>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;

UsageSummary example() {
    const Date today = *parseISO8601("2026-03-10T00:00:00Z");
    UsageSummary summary;
    summary.days = 30;
    summary.windowEnd = today;
    summary.totalCostUSD = 12.345678901234567;
    summary.sessions = 3;
    summary.tools = {{ProviderID::codex, 3, 9'007'199'254'740'993, 12.5, 1, 0.1, true}};
    summary.daily = {{today, ProviderID::codex, 5, 0.1}};
    summary.models = {
        {ProviderID::codex, "gpt \"quoted\" ü", 1.5, 0.5, 0.25, {1, 2, 3, 4, 5, 6}, true},
        {ProviderID::claude, "unlisted", std::nullopt, 0, 0.75, {}, false}};
    summary.perDay = {{today, 0.1, 5, 2}};
    summary.tokens = {1, 2, 3, 4, 5, 6};
    summary.costByType = {1, 2, 3, 4, 5};
    summary.cacheSavingsUSD = -0.5;
    summary.hasUnknownPrices = true;
    return summary;
}

std::vector<std::string> keysOf(const Json& json) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : json.items())
        keys.push_back(key);
    return keys;
}

TEST(UsageSummaryCoding, RoundTripsThroughText) {
    for (const DateCoding dates : {DateCoding::iso8601, DateCoding::secondsSince2001}) {
        const std::string text = jsonText(encode(example(), dates));
        EXPECT_EQ(decodeUsageSummary(parseJson(text), dates), example());
    }
}

TEST(UsageSummaryCoding, HasTheFieldsInTheirOrder) {
    const Json json = encode(example(), DateCoding::iso8601);
    EXPECT_THAT(keysOf(json), ElementsAre("days", "windowEnd", "totalCostUSD", "sessions", "tools",
                                          "daily", "models", "perDay", "tokens", "costByType",
                                          "cacheSavingsUSD", "hasUnknownPrices"));
    EXPECT_EQ(json["windowEnd"], "2026-03-10T00:00:00Z");
    EXPECT_THAT(keysOf(json["tools"][0]), ElementsAre("provider", "sessions", "tokens", "costUSD",
                                                      "costShare", "tokenShare", "approximate"));
    EXPECT_THAT(keysOf(json["daily"][0]), ElementsAre("day", "provider", "tokens", "costUSD"));
    EXPECT_THAT(keysOf(json["models"][0]), ElementsAre("provider", "model", "costUSD", "costShare",
                                                       "tokenShare", "tokens", "approximate"));
    // A model without a price leaves the cost out, so that nobody reads it as free.
    EXPECT_THAT(keysOf(json["models"][1]), ElementsAre("provider", "model", "costShare",
                                                       "tokenShare", "tokens", "approximate"));
    EXPECT_THAT(keysOf(json["perDay"][0]), ElementsAre("day", "costUSD", "tokens", "sessions"));
    EXPECT_THAT(keysOf(json["costByType"]),
                ElementsAre("input", "cacheRead", "cacheWrite", "output", "other"));
}

TEST(UsageSummaryCoding, ReadsANullCostAsNone) {
    Json json = encode(example(), DateCoding::iso8601);
    json["models"][0]["costUSD"] = nullptr;
    EXPECT_EQ(decodeUsageSummary(json, DateCoding::iso8601).models[0].costUSD, std::nullopt);
}

/// Every place inside a document, by the path to it.
void visitAll(const Json& json, const Json::json_pointer& here,
              const std::function<void(const Json::json_pointer&)>& visit) {
    visit(here);
    if (json.is_object()) {
        for (const auto& [key, value] : json.items())
            visitAll(value, here / key, visit);
    } else if (json.is_array()) {
        for (std::size_t i = 0; i < json.size(); ++i)
            visitAll(json[i], here / i, visit);
    }
}

TEST(UsageSummaryCoding, RefusesAnyPartMissingOrOfAnotherType) {
    const Json whole = encode(example(), DateCoding::iso8601);
    int refused = 0;
    visitAll(whole, Json::json_pointer(), [&](const Json::json_pointer& place) {
        SCOPED_TRACE(place.to_string());
        const bool optional =
            place.to_string().ends_with("/costUSD") && place.to_string().starts_with("/models");
        Json wrong = whole;
        // A string where there was none, and a number where there was a string.
        wrong[place] = whole[place].is_string() ? Json(1.5) : Json("text");
        EXPECT_THROW(decodeUsageSummary(wrong, DateCoding::iso8601), DecodingError);
        if (place.empty() || optional) return;
        wrong[place] = nullptr;
        EXPECT_THROW(decodeUsageSummary(wrong, DateCoding::iso8601), DecodingError);
        wrong = whole;
        Json& parent = wrong[place.parent_pointer()];
        if (!parent.is_object()) return;
        parent.erase(place.back());
        EXPECT_THROW(decodeUsageSummary(wrong, DateCoding::iso8601), DecodingError);
        ++refused;
    });
    EXPECT_GT(refused, 50);
}

TEST(UsageSummaryCoding, RefusesUnknownProvidersAndNumbersThatAreNotWhole) {
    Json json = encode(example(), DateCoding::iso8601);
    json["tools"][0]["provider"] = "Codex";
    EXPECT_THROW(decodeUsageSummary(json, DateCoding::iso8601), DecodingError);
    json = encode(example(), DateCoding::iso8601);
    json["sessions"] = 1.5;
    EXPECT_THROW(decodeUsageSummary(json, DateCoding::iso8601), DecodingError);
}

} // namespace
} // namespace tokwatch

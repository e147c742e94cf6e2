#include "TokwatchCore/Store/UsageSummary.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <gtest/gtest.h>

#include <functional>

namespace tokwatch {
namespace {

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

TEST(UsageSummaryCoding, HasTheFieldsInTheirOrderAndReadsThemBack) {
    // A model without a price leaves the cost out, so that nobody reads it as free.
    EXPECT_EQ(
        jsonText(encode(example(), DateCoding::iso8601)),
        R"({"days":30,"windowEnd":"2026-03-10T00:00:00Z","totalCostUSD":12.345678901234567,"sessions":3,)"
        R"("tools":[{"provider":"codex","sessions":3,"tokens":9007199254740993,"costUSD":12.5,"costShare":1.0,)"
        R"("tokenShare":0.1,"approximate":true}],)"
        R"("daily":[{"day":"2026-03-10T00:00:00Z","provider":"codex","tokens":5,"costUSD":0.1}],)"
        R"("models":[{"provider":"codex","model":"gpt \"quoted\" ü","costUSD":1.5,"costShare":0.5,)"
        R"("tokenShare":0.25,"tokens":{"uncachedInput":1,"cacheRead":2,"cacheWrite5m":3,"cacheWrite1h":4,)"
        R"("output":5,"reasoning":6},"approximate":true},)"
        R"({"provider":"claude","model":"unlisted","costShare":0.0,"tokenShare":0.75,"tokens":{"uncachedInput":0,)"
        R"("cacheRead":0,"cacheWrite5m":0,"cacheWrite1h":0,"output":0,"reasoning":0},"approximate":false}],)"
        R"("perDay":[{"day":"2026-03-10T00:00:00Z","costUSD":0.1,"tokens":5,"sessions":2}],)"
        R"("tokens":{"uncachedInput":1,"cacheRead":2,"cacheWrite5m":3,"cacheWrite1h":4,"output":5,"reasoning":6},)"
        R"("costByType":{"input":1.0,"cacheRead":2.0,"cacheWrite":3.0,"output":4.0,"other":5.0},)"
        R"("cacheSavingsUSD":-0.5,"hasUnknownPrices":true})");
    for (const DateCoding dates : {DateCoding::iso8601, DateCoding::secondsSince2001})
        EXPECT_EQ(decode<UsageSummary>(parseJson(jsonText(encode(example(), dates))), dates),
                  example());
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
        EXPECT_THROW(decode<UsageSummary>(wrong, DateCoding::iso8601), DecodingError);
        if (place.empty() || optional) return;
        wrong[place] = nullptr;
        EXPECT_THROW(decode<UsageSummary>(wrong, DateCoding::iso8601), DecodingError);
        wrong = whole;
        Json& parent = wrong[place.parent_pointer()];
        if (!parent.is_object()) return;
        parent.erase(place.back());
        EXPECT_THROW(decode<UsageSummary>(wrong, DateCoding::iso8601), DecodingError);
        ++refused;
    });
    EXPECT_GT(refused, 50);
    for (const auto& [place, wrong] :
         {std::pair{"/tools/0/provider", Json("Codex")}, {"/sessions", Json(1.5)}}) {
        Json json = whole;
        json[Json::json_pointer(place)] = wrong;
        EXPECT_THROW(decode<UsageSummary>(json, DateCoding::iso8601), DecodingError) << place;
    }
}

} // namespace
} // namespace tokwatch

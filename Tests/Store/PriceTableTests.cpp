#include "TokwatchCore/Store/PriceTable.h"

#include "TokwatchCore/Support/DecodingError.h"

#include <gtest/gtest.h>

namespace tokwatch {
namespace {

ModelPrice price(double input) {
    ModelPrice price{input, 50, 1, 12.5, 20, {}, "test", "2026-01-01"};
    return price;
}

TEST(PriceTable, FindsExactNamesAndDatedOnes) {
    ModelPrice dated = price(7);
    const PriceTable table(
        {{"claude-x", price(10)}, {"claude-x-20250101", dated}, {"-20250101", price(3)}});
    EXPECT_EQ(table.price("claude-x")->input, 10);
    EXPECT_EQ(table.price("claude-x-20250101")->input, 7);
    EXPECT_EQ(table.price("claude-x-20250929")->input, 10);
    EXPECT_EQ(table.price("-20250101")->input, 3);
    for (const char* unknown :
         {"Claude-x", "claude-x-2025092", "claude-x-202509290", "claude-x-20250929-beta",
          "claude-x20250929", "claude-x-2025-09-29", "claude", "-20250102", "", "20250101"})
        EXPECT_EQ(table.price(unknown), nullptr) << unknown;
}

TEST(PriceTable, PricesByKind) {
    ModelPrice borrowed = price(10);
    borrowed.proxyFor = "another";
    const PriceTable table({{"m", price(10)}, {"borrowed", borrowed}});
    const TokenCounts tokens{1'000'000, 2'000'000, 100'000, 200'000, 300'000, 999};
    const PricedCost cost = table.cost("m", tokens, 77.0);
    EXPECT_EQ(cost.breakdown, (CostBreakdown{10, 2, 1.25 + 4, 15, 0}));
    EXPECT_EQ(cost.usd, 15.0 + 10 + 2 + 5.25);
    EXPECT_EQ(cost.cacheSavingsUSD, 18);
    EXPECT_FALSE(cost.approximate);
    EXPECT_TRUE(table.cost("borrowed", tokens, {}).approximate);
    EXPECT_EQ(table.cost("borrowed", tokens, {}).usd, cost.usd);
    EXPECT_EQ(table.cost("m", {}, {}).usd, 0);
    EXPECT_LT(PriceTable({{"m", price(0.5)}}).cost("m", tokens, {}).cacheSavingsUSD, 0);
}

TEST(PriceTable, FallsBackToWhatTheToolReported) {
    const PriceTable empty;
    EXPECT_EQ(empty.cost("m", {1, 2, 3, 4, 5, 6}, 0.42),
              (PricedCost{0.42, CostBreakdown{0, 0, 0, 0, 0.42}, true, 0}));
    EXPECT_EQ(empty.cost("m", {1, 2, 3, 4, 5, 6}, {}), PricedCost{});
}

TEST(PriceTable, DecodesWholeEntriesOnly) {
    const std::string entry =
        R"("input":1,"output":2,"cacheRead":0.5,"cacheWrite5m":3,"cacheWrite1h":4,)"
        R"("source":"s","asOf":"d")";
    const auto document = [](const std::string& fields) {
        return R"({"models":{"m":{)" + fields + R"(}},"more":[]})";
    };
    EXPECT_EQ(PriceTable::decode(document(entry)).models().at("m"),
              (ModelPrice{1, 2, 0.5, 3, 4, {}, "s", "d"}));
    EXPECT_EQ(PriceTable::decode(document(entry + R"(,"proxyFor":"o")")).price("m")->proxyFor, "o");
    for (const std::string key :
         {"input", "output", "cacheRead", "cacheWrite5m", "cacheWrite1h", "source", "asOf"}) {
        const std::size_t at = entry.find('"' + key + '"');
        std::string without = entry;
        without.insert(at + 1, "_");
        EXPECT_THROW(PriceTable::decode(document(without)), DecodingError) << key;
        std::string wrong = entry;
        wrong.insert(at + key.size() + 3, "[],\"_\":");
        EXPECT_THROW(PriceTable::decode(document(wrong)), DecodingError) << key;
    }
    for (const char* other : {"", "[]", "{}", R"({"models":[]})", R"({"models":{"m":1}})"})
        EXPECT_THROW(PriceTable::decode(other), DecodingError) << other;
}

TEST(BundledPrices, ArePositiveAndSaid) {
    const PriceTable table = PriceTable::bundled();
    ASSERT_GE(table.models().size(), 100U);
    for (const auto& [name, p] : table.models()) {
        for (const double each : {p.input, p.output, p.cacheRead, p.cacheWrite5m, p.cacheWrite1h}) {
            EXPECT_GT(each, 0) << name;
            EXPECT_LE(each, 1000) << name;
        }
        EXPECT_LE(p.cacheRead, p.input) << name;
        EXPECT_GE(p.output, p.input) << name;
        EXPECT_LE(p.input, p.cacheWrite5m) << name;
        EXPECT_LE(p.cacheWrite5m, p.cacheWrite1h) << name;
        EXPECT_LE(p.cacheWrite1h, 2 * p.input) << name;
        EXPECT_FALSE(p.source.empty()) << name;
        EXPECT_EQ(p.asOf.size(), 10U) << name;
    }
}

TEST(BundledPrices, AreBorrowedOnlyFromModelsThatDoNotBorrow) {
    const PriceTable table = PriceTable::bundled();
    for (const auto& [name, p] : table.models()) {
        if (!p.proxyFor) continue;
        const auto lender = table.models().find(*p.proxyFor);
        ASSERT_NE(lender, table.models().end()) << name;
        EXPECT_FALSE(lender->second.proxyFor) << name;
    }
}

TEST(BundledPrices, KnowTheNamesThatToolsWrite) {
    const PriceTable table = PriceTable::bundled();
    for (const char* name : {"claude-opus-4-1-20250805",
                             "claude-opus-4-20250514",
                             "claude-sonnet-4-20250514",
                             "claude-sonnet-4-5-20250929",
                             "claude-haiku-4-5-20251001",
                             "claude-3-5-haiku-20241022",
                             "claude-3-7-sonnet-20250219",
                             "claude-opus-4-5-20251101",
                             "claude-opus-5-5",
                             "gpt-5",
                             "gpt-5-codex",
                             "gpt-5.1-codex",
                             "gpt-5.1-codex-max",
                             "gpt-5.2-codex",
                             "codex-mini-latest",
                             "gpt-5.3-codex",
                             "gpt-4.1-2025-04-14",
                             "o3",
                             "codex-auto-review",
                             "grok-code-fast-1",
                             "grok-4",
                             "grok-4-0709",
                             "grok-4-fast-reasoning",
                             "grok-build-0.1"})
        EXPECT_NE(table.price(name), nullptr) << name;
    for (const char* name : {"unknown", "<synthetic>", "claude-preview-next", "gpt-oss-120b"})
        EXPECT_EQ(table.price(name), nullptr) << name;
}

} // namespace
} // namespace tokwatch

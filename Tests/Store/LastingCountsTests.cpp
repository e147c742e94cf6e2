#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/Testing.h"
#include "TokwatchCore/Store/LastingCounts.h"

namespace tokwatch::testing {

TEST(LastingCounts, NeverFall) {
    const TemporaryDirectory home;
    const auto dollars = [](double perToken) {
        ModelPrice price;
        price.output = perToken * 1e6;
        return PriceTable({{"m", price}});
    };
    const PriceTable dear = dollars(2);
    const PriceTable cheap = dollars(1);
    const auto row = [](const char* day, std::int64_t output,
                        std::optional<double> reported = std::nullopt) {
        return DailyRow{ProviderID::grok, "m", day, {.output = output}, reported};
    };
    struct Case {
        const char* what;
        std::vector<DailyRow> stored;
        PriceTable prices;
        std::int64_t output;
        std::optional<double> costUSD;
        std::int64_t cacheRead = 0;
    };
    const std::vector<Case> cases{
        {"no price yet", {row("2026-01-01", 1)}, {}, 1, std::nullopt},
        {"priced since", {row("2026-01-01", 1), row("2026-01-02", 2)}, dear, 3, 6},
        {"the first day pruned, the second grown", {row("2026-01-02", 3)}, dear, 4, 8},
        {"the store removed", {}, dear, 4, 8},
        {"and partly read again", {row("2026-01-02", 1)}, dear, 4, 8},
        {"a lower price", {row("2026-01-02", 4), row("2026-01-03", 1)}, cheap, 6, 9},
        {"the price gone", {row("2026-01-02", 5)}, {}, 7, 9},
        {"reported instead", {row("2026-01-04", 1, 0.5)}, {}, 8, 9.5},
        {"one kind more, another less",
         {{ProviderID::grok, "m", "2026-01-02", {.cacheRead = 7, .output = 1}, {}}},
         {},
         8,
         9.5,
         7},
    };
    for (const Case& each : cases) {
        const std::vector<ModelCount> counts =
            lastingCounts(home / "counts.sqlite", each.stored, each.prices);
        EXPECT_THAT(counts,
                    ElementsAre(ModelCount{ProviderID::grok,
                                           "m",
                                           {.cacheRead = each.cacheRead, .output = each.output},
                                           each.costUSD}))
            << each.what;
    }
}

} // namespace tokwatch::testing

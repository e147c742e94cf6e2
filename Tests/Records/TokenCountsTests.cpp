#include "TokwatchCore/Records/ProviderID.h"
#include "TokwatchCore/Records/TokenCounts.h"

#include <gtest/gtest.h>

#include <limits>

namespace tokwatch {
namespace {

constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();

TEST(TokenCounts, LeavesReasoningOutOfTheTotal) {
    EXPECT_EQ((TokenCounts{0, 0, 0, 0, 0, 99}).total(), 0);
    EXPECT_EQ((TokenCounts{1, 2, 4, 8, 16, 32}).total(), 31);
    EXPECT_EQ((TokenCounts{1, 2, 4, 8, 16, 32}).cacheWrite(), 12);
    EXPECT_EQ((TokenCounts{1, 2, 4, 8, 16, 32} + TokenCounts{1, 1, 1, 1, 1, 1}),
              (TokenCounts{2, 3, 5, 9, 17, 33}));
    EXPECT_EQ(TokenCounts::zero.total(), 0);
}

TEST(TokenCountsDeathTest, StopsTheProgramRatherThanWrap) {
    const TokenCounts full{most, 0, most, 1, 0, 0};
    const auto stops = ::testing::ExitedWithCode(1);
    EXPECT_EXIT((void)(full + full), stops,
                "tokwatch: fatal: a sum of token counts exceeds 64 bits");
    EXPECT_EXIT((void)full.total(), stops, "exceeds 64 bits");
    EXPECT_EXIT((void)full.cacheWrite(), stops, "exceeds 64 bits");
}

TEST(ProviderID, IsFoundByItsExactRawValue) {
    for (const ProviderID provider : allCases<ProviderID>)
        EXPECT_EQ(providerFromRawValue(rawValue(provider)), provider);
    for (const char* other : {"Claude", "CODEX", "", "claude ", "gemini"})
        EXPECT_FALSE(providerFromRawValue(other).has_value()) << other;
}

} // namespace
} // namespace tokwatch

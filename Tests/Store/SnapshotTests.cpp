#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/Testing.h"
#include "TokwatchCore/Store/SnapshotStore.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <numeric>

namespace tokwatch::testing {

const Calendar berlin = *Calendar::named("Europe/Berlin");
const Date now = *parseISO8601("2026-03-30T09:30:00Z"); // the day after the clocks went forward

UsageSummary::DayPoint point(const char* noonUTC, ProviderID provider, std::int64_t tokens,
                             double cost) {
    return {berlin.startOfDay(*parseISO8601(noonUTC)), provider, tokens, cost};
}

const std::vector<LimitWindow> windows{
    {"session", "Session", 0.58, 18000.0, now + Seconds{3600}, LimitSource::live()},
    {"weekly", "Weekly", 0.2, {}, {}, LimitSource::stale(now - Seconds{60})}};
const Credits credits{"Extra usage", std::nullopt, 1.5, 20.0, false};
const ProviderLimits claudeLimits{"Max 5x", windows, credits, ProviderStatus::ok, now};

Snapshot example() {
    UsageSummary summary;
    summary.totalCostUSD = 7;
    summary.tools = {{ProviderID::claude, 2, 900, 6.5, 0.9, 0.9, true}};
    summary.daily = {point("2026-03-01T12:00:00Z", ProviderID::claude, 400, 2.5),
                     point("2026-03-30T08:00:00Z", ProviderID::claude, 500, 4),
                     point("2026-03-30T08:00:00Z", ProviderID::codex, 1, 0.5)};
    return Snapshot::make(summary, {{ProviderID::claude, claudeLimits}},
                          {ProviderID::codex, ProviderID::claude, ProviderID::grok}, now, berlin);
}

TEST(Snapshot, CondensesProvidersInTheUsersOrder) {
    const Snapshot snapshot = example();
    using enum ProviderStatus;
    const Snapshot::Provider codex{ProviderID::codex, {}, {}, {}, unavailable, 1, 0.5, false};
    const Snapshot::Provider claude{ProviderID::claude, "Max 5x", windows, credits,
                                    ProviderStatus::ok, 900,      6.5,     true};
    EXPECT_THAT(snapshot.providers, ElementsAre(codex, claude))
        << "grok has neither limits nor usage";
    ASSERT_THAT(snapshot.dailyCost30, SizeIs(30)) << "though clocks changed";
    EXPECT_EQ(snapshot.dailyCost30.front(), 2.5); // March 1, 29 days before
    EXPECT_EQ(snapshot.dailyCost30.back(), 4.5);
    EXPECT_EQ(std::reduce(snapshot.dailyCost30.begin(), snapshot.dailyCost30.end()), 7);
    EXPECT_EQ(snapshot.costTodayUSD, 4.5);
    EXPECT_EQ(snapshot.cost30dUSD, 7);

    const Snapshot bare = Snapshot::make({}, {{ProviderID::grok, ProviderLimits{}}},
                                         {ProviderID::claude, ProviderID::grok}, now, berlin);
    ASSERT_THAT(bare.providers, SizeIs(1)) << "limits are enough";
    EXPECT_EQ(bare.providers[0].id, ProviderID::grok);
}

TEST(SnapshotStore, ReadsBackTheLastSnapshotWritten) {
    const TemporaryDirectory data;
    const SnapshotStore store(data / SnapshotStore::appGroup);
    EXPECT_FALSE(store.read());
    store.write(Snapshot{});
    store.write(example());
    EXPECT_EQ(store.read(), example());
    const std::string text = data.read("Q7K2M9X4PL.app.tokwatch/snapshot.json");
    EXPECT_THAT(text,
                StartsWith(R"({"generatedAt":"2026-03-30T09:30:00Z","providers":[{"id":"codex")"));
    for (const std::string& damaged : {std::string("{"), std::string(2'000'000, ' ')}) {
        data.write("Q7K2M9X4PL.app.tokwatch/snapshot.json", damaged);
        EXPECT_FALSE(store.read());
    }
    EXPECT_FALSE(SnapshotStore(std::nullopt).read());
    EXPECT_THROW(SnapshotStore(std::nullopt).write(Snapshot{}), SnapshotStore::NoContainer);
}

} // namespace tokwatch::testing

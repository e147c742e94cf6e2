#include "Tests/Support/TemporaryDirectory.h"
#include "TokwatchCore/Store/SnapshotStore.h"
#include "TokwatchCore/Support/ISO8601.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <numeric>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

const Calendar berlin = *Calendar::named("Europe/Berlin");
const Date now = *parseISO8601("2026-03-30T09:30:00Z"); // the day after the clocks went forward

UsageSummary::DayPoint point(const char* noonUTC, ProviderID provider, std::int64_t tokens,
                             double cost) {
    return {berlin.startOfDay(*parseISO8601(noonUTC)), provider, tokens, cost};
}

ProviderLimits claudeLimits() {
    ProviderLimits limits;
    limits.plan = "Max 5x";
    limits.windows = {
        {"session", "Session", 0.58, 18000.0, now + Seconds{3600}, LimitSource::live()},
        {"weekly", "Weekly", 0.2, std::nullopt, std::nullopt,
         LimitSource::stale(now - Seconds{60})}};
    limits.credits = Credits{"Extra usage", std::nullopt, 1.5, 20.0, false};
    limits.status = ProviderStatus::ok;
    limits.fetchedAt = now;
    return limits;
}

Snapshot example() {
    UsageSummary summary;
    summary.totalCostUSD = 7;
    summary.tools = {{ProviderID::claude, 2, 900, 6.5, 0.9, 0.9, true}};
    summary.daily = {point("2026-03-01T12:00:00Z", ProviderID::claude, 400, 2.5),
                     point("2026-03-30T08:00:00Z", ProviderID::claude, 500, 4),
                     point("2026-03-30T08:00:00Z", ProviderID::codex, 1, 0.5)};
    return Snapshot::make(summary, {{ProviderID::claude, claudeLimits()}},
                          {ProviderID::codex, ProviderID::claude, ProviderID::grok}, now, berlin);
}

std::vector<std::string> keysOf(const Json& json) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : json.items())
        keys.push_back(key);
    return keys;
}

unsigned modeOf(const std::filesystem::path& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777U : 0;
}

TEST(Snapshot, CondensesProvidersInTheUsersOrder) {
    const Snapshot snapshot = example();
    ASSERT_THAT(snapshot.providers, SizeIs(2)); // grok has neither limits nor usage
    const Snapshot::Provider& codex = snapshot.providers[0];
    EXPECT_EQ(codex.id, ProviderID::codex);
    EXPECT_EQ(codex.status, ProviderStatus::unavailable);
    EXPECT_FALSE(codex.plan);
    EXPECT_EQ(codex.tokens30d, 1); // from its days, there being no total of its own
    EXPECT_EQ(codex.cost30dUSD, 0.5);
    const Snapshot::Provider& claude = snapshot.providers[1];
    EXPECT_EQ(claude.plan, "Max 5x");
    EXPECT_EQ(claude.windows, claudeLimits().windows);
    EXPECT_EQ(claude.credits, claudeLimits().credits);
    EXPECT_EQ(claude.tokens30d, 900);
    EXPECT_EQ(claude.cost30dUSD, 6.5);
    EXPECT_TRUE(claude.approximate);
}

TEST(Snapshot, HasThirtyDaysOfCostAcrossAChangeOfClocks) {
    const Snapshot snapshot = example();
    ASSERT_THAT(snapshot.dailyCost30, SizeIs(30));
    EXPECT_EQ(snapshot.dailyCost30.front(), 2.5); // March 1, 29 days before
    EXPECT_EQ(snapshot.dailyCost30.back(), 4.5);
    EXPECT_EQ(std::reduce(snapshot.dailyCost30.begin(), snapshot.dailyCost30.end()), 7);
    EXPECT_EQ(snapshot.costTodayUSD, 4.5);
    EXPECT_EQ(snapshot.cost30dUSD, 7);
    EXPECT_EQ(snapshot.generatedAt, now);
}

TEST(Snapshot, CostsNothingOnADayThatAZoneLeftOut) {
    const Calendar apia = *Calendar::named("Pacific/Apia"); // 30 December 2011 never was
    const Date newYear = *parseISO8601("2012-01-01T00:00:00Z");
    UsageSummary summary;
    summary.daily = {{apia.startOfDay(newYear - Seconds{2 * 86'400}), ProviderID::claude, 1, 1},
                     {apia.startOfDay(newYear - Seconds{86'400}), ProviderID::claude, 1, 2},
                     {apia.startOfDay(newYear), ProviderID::claude, 1, 4}};
    const std::vector<double> costs = Snapshot::make(summary, {}, {}, newYear, apia).dailyCost30;
    ASSERT_THAT(costs, SizeIs(30));
    EXPECT_THAT(std::vector<double>(costs.end() - 5, costs.end()), ElementsAre(0, 1, 0, 2, 4));
}

TEST(Snapshot, ListsAProviderForItsLimitsOrAnyUsageAlone) {
    UsageSummary summary;
    summary.daily = {point("2026-03-30T08:00:00Z", ProviderID::claude, 0, 0),
                     point("2026-03-30T08:00:00Z", ProviderID::codex, 0, 0.25)};
    const Snapshot snapshot =
        Snapshot::make(summary, {{ProviderID::grok, ProviderLimits{}}},
                       {allCases<ProviderID>.begin(), allCases<ProviderID>.end()}, now, berlin);
    ASSERT_THAT(snapshot.providers, SizeIs(2));
    EXPECT_EQ(snapshot.providers[0].id, ProviderID::codex);
    EXPECT_EQ(snapshot.providers[1].id, ProviderID::grok);

    const Snapshot nobody = Snapshot::make(summary, {}, {}, now, berlin);
    EXPECT_THAT(nobody.providers, SizeIs(0));
    EXPECT_EQ(nobody.costTodayUSD, 0.25);
    EXPECT_THAT(nobody.dailyCost30, SizeIs(30));
}

TEST(SnapshotStore, ReadsBackTheLastSnapshotWritten) {
    const testing::TemporaryDirectory data;
    const SnapshotStore store(data / SnapshotStore::appGroup);
    EXPECT_FALSE(store.read());
    store.write(Snapshot{});
    const std::filesystem::path directory = data / "Q7K2M9X4PL.app.tokwatch";
    data.write("Q7K2M9X4PL.app.tokwatch/snapshot.json.Ab1z9Z", "its writer was killed");
    store.write(example());
    EXPECT_EQ(store.read(), example());

    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(directory))
        files.push_back(entry.path().filename());
    EXPECT_THAT(files, ElementsAre("snapshot.json"));
    EXPECT_EQ(modeOf(directory / "snapshot.json"), 0600U);
    EXPECT_EQ(modeOf(directory), 0700U);
}

TEST(SnapshotStore, WritesTheAgreedKeysAndDates) {
    const testing::TemporaryDirectory data;
    SnapshotStore(data.path()).write(example());
    const Json json = parseJson(data.read("snapshot.json"));
    EXPECT_THAT(keysOf(json), ElementsAre("generatedAt", "providers", "costTodayUSD", "cost30dUSD",
                                          "dailyCost30"));
    EXPECT_THAT(keysOf(json["providers"][1]),
                ElementsAre("id", "plan", "windows", "credits", "status", "tokens30d", "cost30dUSD",
                            "approximate"));
    EXPECT_EQ(json["generatedAt"], "2026-03-30T09:30:00Z");
}

TEST(SnapshotStore, FindsNothingInDamagedOrForeignFiles) {
    const testing::TemporaryDirectory data;
    const SnapshotStore store(data.path());
    store.write(example());
    const std::string sound = data.read("snapshot.json");
    const std::string deep = "{\"generatedAt\":" + std::string(200'000, '[');
    for (const std::string& text :
         {std::string(), std::string("{"), std::string("[]"), deep,
          std::string("{\"generatedAt\":1}"), sound + std::string(2'000'000, ' ')}) {
        data.write("snapshot.json", text);
        EXPECT_FALSE(store.read()) << text.substr(0, 40);
    }
    std::filesystem::remove(data / "snapshot.json");
    ASSERT_EQ(::mkfifo((data / "snapshot.json").c_str(), 0600), 0);
    EXPECT_FALSE(store.read()) << "nobody waits for a writer";
    std::filesystem::remove(data / "snapshot.json");
    std::filesystem::create_directory(data / "snapshot.json");
    EXPECT_FALSE(store.read());
}

TEST(SnapshotStore, HasNoPlaceWithoutADataHome) {
    const SnapshotStore store(std::nullopt);
    EXPECT_FALSE(store.read());
    EXPECT_THROW(store.write(Snapshot{}), SnapshotStore::NoContainer);
}

TEST(SnapshotStore, LeavesNoStrayFileWhenItCannotReplaceTheOldOne) {
    const testing::TemporaryDirectory data;
    data.write("snapshot.json/in-the-way", "a file cannot take a directory's place");
    EXPECT_THROW(SnapshotStore(data.path()).write(example()), std::system_error);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(data.path()), {}), 1);
}

} // namespace
} // namespace tokwatch

#include "Tests/CommandLine/CommandFixture.h"
#include "Tokwatch/CommandLine/ExportFormats.h"

#include <QStandardPaths>

namespace tokwatch::testing {

TEST(PrometheusText, TellsEachSeriesOnce) {
    const Date moment = dateFromUnixSeconds(1'800'000'000);
    const ProviderLimits limits{
        {},
        {{"session", "Session", 0.25, {}, moment + Seconds{60}, LimitSource::live()},
         {"weekly", "Weekly", 1, {}, {}, LimitSource::stale(moment - Seconds{9})}},
        {},
        ProviderStatus::ok,
        moment};
    const std::vector<ModelCount> counts{
        {ProviderID::codex, "\"\\\n", {1, 2, 3, 4, 5, 6}, 0.5},
        {ProviderID::codex, "\"\\\t", {1'000'000, 0, 0, 0, 0, 0}, 0.25},
    };
    const std::string expected =
        R"(# HELP tokwatch_tokens_total Tokens processed, by kinds that exclude each other.
# TYPE tokwatch_tokens_total counter
tokwatch_tokens_total{host="h",provider="codex",model="\"\\?",kind="cache_read"} 2
tokwatch_tokens_total{host="h",provider="codex",model="\"\\?",kind="cache_write_1h"} 4
tokwatch_tokens_total{host="h",provider="codex",model="\"\\?",kind="cache_write_5m"} 3
tokwatch_tokens_total{host="h",provider="codex",model="\"\\?",kind="input"} 1000001
tokwatch_tokens_total{host="h",provider="codex",model="\"\\?",kind="output"} 5
# HELP tokwatch_cost_usd_total What they would have cost in US dollars at pay-as-you-go API prices.
# TYPE tokwatch_cost_usd_total counter
tokwatch_cost_usd_total{host="h",provider="codex",model="\"\\?"} 0.75
# HELP tokwatch_limit_used_ratio The used part of a rate limit, 0 to 1.
# TYPE tokwatch_limit_used_ratio gauge
tokwatch_limit_used_ratio{host="h",provider="claude",window="session"} 0.25
tokwatch_limit_used_ratio{host="h",provider="claude",window="weekly"} 1
# HELP tokwatch_limit_reset_timestamp_seconds When the rate limit is whole again.
# TYPE tokwatch_limit_reset_timestamp_seconds gauge
tokwatch_limit_reset_timestamp_seconds{host="h",provider="claude",window="session"} 1800000060
# HELP tokwatch_limit_reading_timestamp_seconds When the used part was read.
# TYPE tokwatch_limit_reading_timestamp_seconds gauge
tokwatch_limit_reading_timestamp_seconds{host="h",provider="claude",window="session"} 1800000000
tokwatch_limit_reading_timestamp_seconds{host="h",provider="claude",window="weekly"} 1799999991
)";
    EXPECT_EQ(prometheusText("h", counts, {{ProviderID::claude, limits}}), expected);
    if (!QStandardPaths::findExecutable("promtool").isEmpty()) {
        EXPECT_EQ(runProgram({"promtool", "check", "metrics"}, {}, expected).err, "");
    }
}

TEST_F(CommandTest, ExportsWhatWasCountedThoughTheStoreForgetsIt) {
    namespace fs = std::filesystem;
    writeToday("a.jsonl", "x", 3);
    EXPECT_EQ(here({"index"}).status, 0);
    const std::string today = formattedNow().substr(0, 10);
    const Json json = this->json({"export", "--host", "den"});
    EXPECT_EQ(json["days"][0]["day"], today);
    EXPECT_EQ(json["days"][0]["totalTokens"], 45);
    EXPECT_THAT(
        here({"export", "--format", "csv", "--host", "den"}).out,
        HasSubstr("\r\nden," + today + ",claude,claude-opus-4-1-20250805,30,0,0,0,15,0,45,"));
    const std::vector<std::string> command{"export", "--host", "den"};
    const std::string counted = here(command).out;
    EXPECT_THAT(counted, HasSubstr("claude-opus-4-1-20250805\",kind=\"input\"} 30\n"));

    fs::remove(database());
    EXPECT_EQ(here(command).out, counted);

    const fs::path file = world / "tokwatch.prom";
    const auto write = [&] { return here({"export", "--host", "den", "--output", file.string()}); };
    for (const fs::perms permissions : {fs::perms{0644}, fs::perms{0640}}) {
        EXPECT_EQ(write().out, "");
        EXPECT_EQ(world.read("tokwatch.prom"), counted);
        EXPECT_EQ(fs::status(file).permissions(), permissions);
        fs::permissions(file, fs::perms{0640});
    }
    for (const auto& [target, reason] :
         {std::pair{"/dev/null", " is not a regular file"}, {"/tmp", " is a directory"}}) {
        fs::remove(file);
        fs::create_symlink(target, file);
        expectFailure(write(), 1, reason);
    }
    fs::remove(database().parent_path() / "counts.sqlite");
    fs::create_directory(database().parent_path() / "counts.sqlite");
    expectFailure(here(command), 1, "without them they could fall");
}

} // namespace tokwatch::testing

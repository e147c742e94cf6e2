#include "Tests/Report/ReportFixture.h"
#include "Tests/Support/LogLines.h"
#include "Tokwatch/Report/ProjectPath.h"
#include "Tokwatch/Report/UsageReport.h"

#include <stop_token>

namespace tokwatch::testing {

struct ReportTest : LogsTest {
    LogReading read(const ResponseFiles::Progress& progress = {},
                    const std::stop_token& stop = {}) {
        return files.read(allCases<ProviderID>, touchedSince, progress, stop);
    }

    UsageReport report(ReportBy by, const Calendar& calendar = Calendar::utc()) {
        const UsageReport::Query query{by, window, "/home/me"};
        const Period reach = UsageReport::reach(query);
        const LogReading reading = read();
        return UsageReport::make(query, CountedResponses(reading, reach.start, reach.end), prices,
                                 calendar, now);
    }

    /// Each row as "its name: output tokens", that of a time in 2026 by month, day and time.
    std::string rows(ReportBy by, const Calendar& calendar = Calendar::utc()) {
        std::string rows;
        for (const ReportRow& row : report(by, calendar).rows)
            rows += (rows.empty() ? "" : ", ") +
                    (row.period ? formatISO8601(row.period->start).substr(5, 11)
                                : row.session + row.project + row.model) +
                    ": " + std::to_string(row.sums.tokens.output);
        return rows;
    }

    inline static const PriceTable prices = PriceTable::bundled();
    ResponseFiles files{ProviderLocations{home.path()}};
    Period window{at("2026-03-01T00:00:00Z"), at("2026-04-01T00:00:00Z")};
    Date now = at("2026-03-20T00:00:00Z");
    Date touchedSince = at("2020-01-01T00:00:00Z");
};

TEST(ProjectPath, PutsTheWorktreesOfARepositoryTogether) {
    for (const auto& [directory, project] :
         std::initializer_list<std::pair<const char*, const char*>>{
             {"/src/app", "/src/app"},
             {"/src/app/", "/src/app"},
             {"/src/app/lib", "/src/app/lib"},
             {"/src/app/.claude/worktrees/fix", "/src/app"},
             {"/src/app/.worktrees/fix/lib", "/src/app"},
             {"/src/app/worktrees/fix", "/src/app"},
             {"/src/app.worktrees/fix", "/src/app"},
             {"/src/worktrees", "/src/worktrees"},
             {"/worktrees/app", "/worktrees/app"},
             {"/home/me/worktrees/app", "/home/me/worktrees/app"},
             {"/home/me/.codex/worktrees/1a2b/app", "/home/me/.codex/worktrees/1a2b/app"},
             {"/src/../src/./app", "/src/app"},
             {"/", "/"},
             {"app", ""},
             {"", ""}})
        EXPECT_EQ(projectOf(directory, "/home/me"), project) << directory;
}

TEST_F(ReportTest, CountsAResponseOnceWithItsLastCounts) {
    struct Case {
        const char* what;
        std::vector<Line> first, second;
        std::int64_t output;
    };
    const std::string later = "2026-03-10T12:00:05Z";
    const Line goingOn{"m", 2, later, "s", "/src/app", "null"};
    for (const Case& c :
         {Case{"the last line of a file, whatever its time", {{"m", 1, later}, {"m", 9}}, {}, 9},
          {"far apart", {{"m", 1}, {"n", 1}, {"m", 7}}, {}, 8},
          {"a history that was copied", {{"m", 5}}, {{"m", 5}, {"n", 2}}, 7},
          {"copied while it was written", {{"m", 9, later}}, {{"m", 2}}, 9},
          {"the same, by files in another order", {{"m", 2}}, {{"m", 9, later}}, 9},
          {"a line that says that more follows", {{"m", 9}}, {goingOn}, 9},
          {"of two alike the later file's", {{"m", 4}}, {{"m", 3}}, 3}}) {
        write("p/a.jsonl", c.first);
        write("p/b.jsonl", c.second);
        const UsageReport day = report(ReportBy::day);
        EXPECT_EQ(day.total.tokens.output, c.output) << c.what;
    }
}

TEST_F(ReportTest, GivesEverySessionTheProjectThatItBeganIn) {
    write("-src-app/one.jsonl", {{"a", 1, "2026-03-10T12:00:00Z", "one"},
                                 {"b", 2, "2026-03-10T12:10:00Z", "one", "/src/app/lib"}});
    // An agent's transcript: read before its session's, begun after it, in a worktree elsewhere.
    write("-src-app/agent-1.jsonl", {{"c", 4, "2026-03-10T12:05:00Z", "one", "/tmp/agent"}});
    write("-src-other/two.jsonl",
          {{"d", 8, "2026-03-11T12:00:00Z", "two", "/src/app/.worktrees/x"}});
    home.write(".codex/sessions/r.jsonl",
               R"({"type":"session_meta","payload":{"id":"three","cwd":"/src/tool"}})"
               "\n" +
                   CodexLog::model("gpt-5") + CodexLog::usage("r", 100, 16));
    home.write(".grok/sessions/g/usage.json", grokDocument("four", 1));
    EXPECT_EQ(rows(ReportBy::project), "/src/app: 15, : 7, /src/tool: 16");
    EXPECT_EQ(rows(ReportBy::session),
              "two/src/app: 8, one/src/app: 7, four: 7, three/src/tool: 16");
    EXPECT_EQ(rows(ReportBy::model), "claude-opus-4-1: 15, grok-4: 7, gpt-5: 16");
}

TEST_F(ReportTest, DividesTimeAsTheCalendarOfItsUserDoes) {
    write("p/a.jsonl", {{"a", 1, "2026-03-08T04:59:59Z"}, // the last second of the 7th in New York
                        {"b", 2, "2026-03-08T05:00:00Z"},
                        {"c", 4, "2026-03-09T03:59:59Z"}, // its clocks have skipped an hour
                        {"d", 8, "2026-03-09T04:00:00Z"},
                        {"e", 16, "2026-03-31T23:59:59Z"}});
    struct Case {
        ReportBy by;
        const char *zone, *rows;
    };
    for (const Case& c :
         {Case{ReportBy::day, "America/New_York",
               "03-31T04:00: 16, 03-09T04:00: 8, 03-08T05:00: 6, 03-07T05:00: 1"},
          {ReportBy::week, "America/New_York", "03-30T04:00: 16, 03-09T04:00: 8, 03-02T05:00: 7"},
          {ReportBy::month, "UTC", "03-01T00:00: 31"},
          {ReportBy::month, "Europe/Berlin", "03-31T22:00: 16, 02-28T23:00: 15"},
          {ReportBy::hour, "Asia/Kolkata", // half an hour off
           "03-31T23:30: 16, 03-09T03:30: 12, 03-08T04:30: 3"}})
        EXPECT_EQ(rows(c.by, *Calendar::named(c.zone)), c.rows) << c.zone;
    window = {at("2026-03-08T05:00:00Z"), at("2026-03-09T04:00:00Z")};
    EXPECT_EQ(report(ReportBy::project).total.tokens.output, 6);
}

TEST_F(ReportTest, FollowsBlocksOfFiveHours) {
    window = {at("2026-03-10T00:00:00Z"), at("2026-03-11T00:00:00Z")};
    write("p/a.jsonl", {{"a", 1, "2026-03-09T15:00:00Z"},
                        {"b", 2, "2026-03-09T22:30:00Z"}, // its block reaches into the window
                        {"c", 4, "2026-03-10T02:59:59Z"},
                        {"d", 8, "2026-03-10T03:00:00Z"}, // right at its end
                        {"e", 16, "2026-03-10T12:20:00Z"},
                        {"f", 84, "2026-03-10T13:00:00Z"},
                        {"g", 32, "2026-03-11T05:00:00Z"}}); // a block of the day after
    now = at("2026-03-10T14:00:00Z");
    const UsageReport blocks = report(ReportBy::block);
    EXPECT_EQ(blocks.total.tokens.output, 114);
    EXPECT_EQ(rows(ReportBy::block), "03-10T12:00: 100, 03-10T03:00: 8, 03-09T22:00: 6");
    // 100 tokens in as many minutes, and three hours to go.
    ASSERT_TRUE(blocks.rows[0].pace.has_value());
    EXPECT_EQ(blocks.rows[0].period->end, at("2026-03-10T17:00:00Z"));
    EXPECT_DOUBLE_EQ(blocks.rows[0].pace->tokensPerMinute, 1);
    EXPECT_DOUBLE_EQ(blocks.rows[0].pace->projectedTokens, 280);
    EXPECT_DOUBLE_EQ(*blocks.rows[0].pace->projectedUSD, *blocks.rows[0].sums.costUSD * 2.8);
    EXPECT_FALSE(blocks.rows[1].pace.has_value());
    now = at("2026-03-10T17:00:00Z");
    EXPECT_FALSE(report(ReportBy::block).rows[0].pace.has_value()) << "it has ended";
}

TEST_F(ReportTest, PricesEachRowByItsModels) {
    home.write(".grok/sessions/g/usage.json", grokDocument("g", 2, "grok-unheard-of"));
    home.write(".codex/sessions/r.jsonl",
               CodexLog::model("gpt-unheard-of") + CodexLog::usage("r", 100, 16));
    write("p/a.jsonl", {{"a", 1'000'000}});
    const UsageReport models = report(ReportBy::model);
    ASSERT_EQ(models.rows.size(), 3U);
    EXPECT_DOUBLE_EQ(*models.rows[0].sums.costUSD, 75) << "a list price times a count";
    EXPECT_FALSE(models.rows[0].sums.approximate);
    EXPECT_DOUBLE_EQ(*models.rows[1].sums.costUSD, 5) << "as the tool reported";
    EXPECT_TRUE(models.rows[1].sums.approximate);
    EXPECT_FALSE(models.rows[2].sums.costUSD.has_value());
    EXPECT_DOUBLE_EQ(*models.total.costUSD, 80);
    EXPECT_TRUE(models.total.hasUnknownPrices);
}

TEST_F(ReportTest, NamesWhatWentWhileItRead) {
    write("p/a.jsonl", {{"a", 1}, {"a", 1}, {"a", 1}, {"a", 1}, {"a", 1}, {"a", 1}});
    write("p/b.jsonl", {{"b", 2}});
    write("p/old.jsonl", {{"c", 4}});
    std::filesystem::last_write_time(home / ".claude/projects/p/old.jsonl",
                                     std::filesystem::file_time_type::clock::now() -
                                         std::chrono::hours(48));
    touchedSince = systemNow() - Seconds{24 * 3600.0};
    home.write(".codex/sessions/r.jsonl", CodexLog::usage("r", 0, 8));
    // The largest comes first; then, one file is removed and another moved before they are read.
    bool isFirst = true;
    std::filesystem::create_directories(home / ".codex/archived_sessions");
    const LogReading reading = read([&](std::int64_t, std::int64_t) {
        if (!std::exchange(isFirst, false)) return;
        std::filesystem::remove(home / ".claude/projects/p/b.jsonl");
        std::filesystem::rename(home / ".codex/sessions/r.jsonl",
                                home / ".codex/archived_sessions/r.jsonl");
    });
    const CountedResponses counted(reading, window.start, window.end);
    std::int64_t output = 0;
    for (const CountedResponses::Entry& entry : counted.entries)
        output += entry.response->tokens.output;
    EXPECT_EQ(output, 1 + 8) << "what is there, where it is now, and nothing that nobody touched";
    EXPECT_THAT(reading.gone, ElementsAre((home / ".claude/projects/p/b.jsonl").string()));
}

TEST_F(ReportTest, ReadsOnlyWhatHasChangedAgain) {
    write("p/a.jsonl", {{"a", 1}});
    write("p/b.jsonl", {{"b", 2}});
    EXPECT_EQ(report(ReportBy::day).total.tokens.output, 3);
    write("p/b.jsonl", {{"b", 2}, {"c", 4}});
    const auto bytesRead = [this] {
        std::int64_t bytes = 0;
        read([&](std::int64_t, std::int64_t all) { bytes = all; });
        return bytes;
    };
    EXPECT_EQ(bytesRead(), std::filesystem::file_size(home / ".claude/projects/p/b.jsonl"));
    // Fewer days for a while, and a reading that was stopped before its first file.
    const Date longAgo = std::exchange(touchedSince, systemNow() + Seconds{3600});
    EXPECT_THAT(read().files, IsEmpty());
    touchedSince = longAgo;
    home.write(".codex/sessions/r.jsonl", CodexLog::usage("r", 0, 8));
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(read({}, stop.get_token()).files.size(), 2U);
    EXPECT_EQ(bytesRead(), std::filesystem::file_size(home / ".codex/sessions/r.jsonl"));
    std::filesystem::remove(home / ".codex/sessions/r.jsonl");
    EXPECT_EQ(report(ReportBy::day).total.tokens.output, 7);
    std::filesystem::remove(home / ".claude/projects/p/a.jsonl");
    EXPECT_EQ(report(ReportBy::day).total.tokens.output, 6);
    EXPECT_THAT(read().unread, IsEmpty());
}

} // namespace tokwatch::testing

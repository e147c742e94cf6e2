#include "IndexerServiceFixture.h"

#include <atomic>
#include <filesystem>

namespace tokwatch {
namespace {

using testing::ClaudeResponse;
using testing::CodexLog;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string claudeLog = ".claude/projects/p/a.jsonl";
const std::string codexLog = ".codex/sessions/2026/03/10/rollout.jsonl";

TEST_F(IndexerServiceTest, ReadsOnFromWhereItStopped) {
    home.write(claudeLog,
               ClaudeResponse{"msg_1"}.line() + ClaudeResponse{"msg_2"}.line().substr(0, 40));
    EXPECT_EQ(index(), (IndexOutcome{1, false}));
    EXPECT_EQ(index(), (IndexOutcome{0, false}));
    home.append(claudeLog,
                ClaudeResponse{"msg_2"}.line().substr(40) + ClaudeResponse{"msg_1"}.line());
    EXPECT_EQ(index(), (IndexOutcome{1, false}));
    EXPECT_EQ(outputTokens(), 10);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(IndexerServiceTest, ReadsNoMoreThanItsScope) {
    const std::filesystem::path named = home.write(claudeLog, ClaudeResponse{"msg_1"}.line());
    home.write(".claude/projects/p/other.jsonl", ClaudeResponse{"msg_2"}.line());
    home.write(codexLog, CodexLog::session("S") + CodexLog::usage("r1", 100, 7));
    const auto pass = [this](const IndexScope& scope) {
        return indexer().index({}, scope).result().newEvents;
    };
    EXPECT_EQ(pass(IndexScope{std::in_place}), 0);
    EXPECT_EQ(pass(IndexScope{{named, "/elsewhere/x.jsonl", named}}), 1);
    home.append(claudeLog, ClaudeResponse{"msg_3"}.line());
    EXPECT_EQ(pass(IndexScope{{named}}), 1);
    EXPECT_EQ(indexer().statistics().providers[0].bytesRead,
              static_cast<std::int64_t>(ClaudeResponse{"msg_3"}.line().size()))
        << "from where it stopped";
    EXPECT_EQ(pass({}), 2) << "the rest is left for a pass over all files";
}

TEST_F(IndexerServiceTest, CountsTheLastLineOfAResponseInASlice) {
    ClaudeResponse growing{"msg_1"};
    std::string lines = growing.line();
    growing.output = 500;
    home.write(claudeLog, lines + growing.line());
    EXPECT_EQ(index().newEvents, 1);
    EXPECT_EQ(outputTokens(), 500);
}

TEST_F(IndexerServiceTest, KeepsTheCodexContextBetweenPasses) {
    home.write(codexLog, CodexLog::session("S") + CodexLog::model("gpt-5-codex"));
    EXPECT_EQ(index(), (IndexOutcome{0, false}));
    home.append(codexLog, CodexLog::usage("r1", 100, 7));
    EXPECT_EQ(index(), (IndexOutcome{1, false}));
    const UsageSummary found = summary();
    ASSERT_EQ(found.models.size(), 1U);
    EXPECT_EQ(found.models[0].model, "gpt-5-codex");
    EXPECT_EQ(found.sessions, 1);
}

TEST_F(IndexerServiceTest, StoresTheNewestCodexLimits) {
    home.write(codexLog, CodexLog::limits(10, "2026-03-10T12:00:00Z") +
                             CodexLog::limits(20, "2026-03-10T13:00:00Z"));
    home.write(".codex/archived_sessions/old.jsonl", CodexLog::limits(99, "2026-03-01T12:00:00Z"));
    EXPECT_EQ(index(), (IndexOutcome{0, true}));
    EXPECT_EQ(store->limits(ProviderID::codex)->windows[0].usedFraction, 0.2);
    EXPECT_EQ(index(), (IndexOutcome{0, false}));
}

TEST_F(IndexerServiceTest, CountsOnlyWhatIsNewInARewrittenGrokDocument) {
    home.write(".grok/sessions/s/usage.json", testing::grokDocument("s", 2));
    EXPECT_EQ(index().newEvents, 2);
    home.write(".grok/sessions/s/usage.json",
               testing::grokDocument("s", 5).substr(0, 200)); // caught half written
    EXPECT_EQ(index().newEvents, 0);
    home.write(".grok/sessions/s/usage.json", testing::grokDocument("s", 5));
    EXPECT_EQ(index().newEvents, 3);
    EXPECT_EQ(outputTokens(), 35);
    EXPECT_DOUBLE_EQ(summary().totalCostUSD, 12.5);
}

TEST_F(IndexerServiceTest, ReadsAFileLargerThanASliceInOnePass) {
    std::string lines;
    const std::string noise = R"({"type":"user","content":")" + std::string(1 << 20, 'x') + "\"}\n";
    for (int i = 0; i < 20; ++i)
        lines += ClaudeResponse{"msg_" + std::to_string(i)}.line() + noise;
    home.write(claudeLog, lines);
    std::vector<IndexingProgress> seen;
    EXPECT_EQ(
        index([&seen](const IndexingProgress& progress) { seen.push_back(progress); }).newEvents,
        20);
    ASSERT_GE(seen.size(), 3U);
    EXPECT_EQ(seen.back(),
              (IndexingProgress{ProviderID::claude, static_cast<std::int64_t>(lines.size()),
                                static_cast<std::int64_t>(lines.size())}));
    EXPECT_LT(seen.front().bytesRead, seen.back().bytesRead);
}

TEST_F(IndexerServiceTest, FindsTheSameWhateverThePassesAre) {
    // Enough for the reader to run ahead, with keys that repeat across files.
    const std::string noise = R"({"type":"user","content":")" + std::string(20'000, 'x') + "\"}\n";
    for (int f = 0; f < 20; ++f) {
        std::string lines;
        for (int i = 0; i < 20; ++i)
            lines += ClaudeResponse{"msg_" + std::to_string(f / 2 * 20 + i)}.line() + noise;
        home.write(".claude/projects/p/" + std::to_string(f) + ".jsonl", lines);
    }
    EXPECT_EQ(index().newEvents, 200);
    const UsageSummary once = summary();
    store->resetCursors(ProviderID::claude);
    EXPECT_EQ(index().newEvents, 0);
    EXPECT_EQ(summary(), once);
}

TEST_F(IndexerServiceTest, RunsOnePassAtATimeInArrivalOrder) {
    home.write(claudeLog, ClaudeResponse{"msg_1"}.line());
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
    ingest = [&](std::span<const UsageEvent> events, const Calendar& calendar) {
        most = std::max(most.load(), ++running);
        const std::int64_t added = store->ingest(events, calendar);
        --running;
        return added;
    };
    std::vector<QFuture<IndexOutcome>> passes;
    for (int i = 0; i < 8; ++i) {
        home.append(claudeLog, ClaudeResponse{"more_" + std::to_string(i)}.line());
        passes.push_back(indexer().index());
    }
    std::int64_t total = 0;
    for (QFuture<IndexOutcome>& pass : passes)
        total += pass.result().newEvents;
    EXPECT_EQ(total, 9);
    EXPECT_EQ(most, 1);
}

TEST_F(IndexerServiceTest, AddsCursorUsageAndLogsItsFailure) {
    int calls = 0;
    const auto usage = [&calls]() -> std::vector<UsageEvent> {
        if (++calls > 1) throw std::runtime_error("no such table");
        return {{ProviderID::cursor,
                 "m",
                 "s",
                 "k",
                 *parseISO8601("2026-03-10T12:00:00Z"),
                 {1, 0, 0, 0, 0, 0},
                 {}}};
    };
    service = std::make_unique<IndexerService>(store, locations, days, ingest, usage);
    EXPECT_EQ(index().newEvents, 1);
    EXPECT_EQ(index().newEvents, 0);
    EXPECT_THAT(log.lines(), ElementsAre("Tokwatch: storing Cursor usage failed: no such table"));
}

TEST_F(IndexerServiceTest, KnowsWhoseAChangedPathIs) {
    std::filesystem::create_directories(home / "elsewhere");
    std::filesystem::create_directories(home / ".grok");
    std::filesystem::create_directory_symlink(home / "elsewhere", home / ".grok/sessions");
    struct Case {
        std::string path;
        std::optional<ProviderID> provider;
    };
    const std::string root = home.path().string();
    for (const Case& c :
         {Case{root + "/.claude/projects/p/a.jsonl", ProviderID::claude},
          {root + "/.claude/projects/a.jsonl", ProviderID::claude},
          {root + "/.claude/projects-old/a.jsonl", {}},
          {root + "/.claude/projects/p/a.txt", {}},
          {root + "/.claude/projects", {}},
          {root + "/.codex/sessions/a.jsonl", ProviderID::codex},
          {root + "/.codex/archived_sessions/a.jsonl", ProviderID::codex},
          {root + "/.codex/history.jsonl", {}},
          {root + "/.grok/sessions/s/usage.json", ProviderID::grok},
          {root + "/elsewhere/s/usage.json", ProviderID::grok}, // the root is a link to there
          {root + "/.grok/sessions/s/a.jsonl", {}},
          {"", {}}})
        EXPECT_EQ(indexer().providerForChangedPath(c.path), c.provider) << c.path;
}

} // namespace
} // namespace tokwatch

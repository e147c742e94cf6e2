#include "CapturedLog.h"
#include "ISO8601.h"
#include "IndexerService.h"
#include "LogLines.h"
#include "TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>

namespace tokwatch {
namespace {

using testing::ClaudeResponse;
using testing::CodexLog;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TemporaryDirectory;

const std::string claudeLog = ".claude/projects/p/a.jsonl";
const std::string codexLog = ".codex/sessions/2026/03/10/rollout.jsonl";

class IndexerServiceTest : public ::testing::Test {
  protected:
    IndexOutcome index(IndexerService::ProgressHandler progress = {}) {
        return indexer().index(std::move(progress)).result();
    }
    IndexerService& indexer() {
        if (!service) service = std::make_unique<IndexerService>(store, locations, utc, ingest);
        return *service;
    }
    UsageSummary summary() const {
        return store->summary(30, *parseISO8601("2026-03-20T00:00:00Z"), utc, PriceTable());
    }
    std::int64_t outputTokens() const { return summary().tokens.output; }

    TemporaryDirectory home;
    ProviderLocations locations{home.path()};
    Calendar utc = Calendar::utc();
    std::shared_ptr<UsageStore> store = std::make_shared<UsageStore>(home / "data/usage.sqlite");
    IndexerService::IngestEvents ingest;
    std::unique_ptr<IndexerService> service;
    testing::CapturedLog log;
};

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

TEST_F(IndexerServiceTest, GoesOnPastFilesThatCannotBeRead) {
    home.write(".claude/projects/p/1.jsonl", ClaudeResponse{"msg_1"}.line());
    home.write(".claude/projects/p/2.jsonl", ClaudeResponse{"msg_2"}.line());
    store->save(FileCursor{"/elsewhere", 1, 1, {}});
    // A cursor that does not decode ends the work on its file.
    const std::filesystem::path broken = home / ".claude/projects/p/1.jsonl";
    store->save(FileCursor{broken.string(), 1, 1, {}});
    ingest = [this](std::span<const UsageEvent> events, const Calendar& calendar) {
        for (const UsageEvent& event : events) {
            if (event.dedupKey == "msg_3") throw UsageStoreError(13, "database or disk is full");
        }
        return store->ingest(events, calendar);
    };
    home.write(".claude/projects/p/3.jsonl", ClaudeResponse{"msg_3"}.line());
    home.write(".claude/projects/p/4.jsonl", ClaudeResponse{"msg_4"}.line());
    EXPECT_EQ(index().newEvents, 3);
    EXPECT_THAT(log.lines(),
                ElementsAre("Tokwatch: indexing 3.jsonl failed: database or disk is full (13)"));
    EXPECT_EQ(indexer().statistics().unstoredFiles, 1);
    EXPECT_FALSE(store->cursor((home / ".claude/projects/p/3.jsonl").string()).has_value());
    service.reset();
    ingest = {};
    EXPECT_EQ(index().newEvents, 1) << "what could not be stored is read again";
}

TEST_F(IndexerServiceTest, NeverMovesACursorPastASliceThatIsNotStored) {
    std::string lines;
    const std::string noise = R"({"type":"user","content":")" + std::string(3 << 20, 'x') + "\"}\n";
    for (int i = 0; i < 10; ++i)
        lines += ClaudeResponse{"msg_" + std::to_string(i)}.line() + noise;
    home.write(claudeLog, lines);
    std::atomic<bool> failing = true;
    ingest = [this, &failing](std::span<const UsageEvent> events, const Calendar& calendar) {
        if (failing && events.front().dedupKey != "msg_0" && events.size() < 10)
            throw UsageStoreError(5, "locked");
        if (failing && events.size() == 10) throw UsageStoreError(5, "locked");
        return store->ingest(events, calendar);
    };
    index();
    failing = false;
    index();
    EXPECT_EQ(outputTokens(), 50);
}

TEST_F(IndexerServiceTest, LogsAFileThatVanishedBeforeItWasRead) {
    home.write(".claude/projects/p/1.jsonl", ClaudeResponse{"msg_1"}.line());
    home.write(".claude/projects/p/2.jsonl", ClaudeResponse{"msg_2"}.line());
    // The first progress report comes after the listing and before the second file is read.
    const auto vanish = [this](const IndexingProgress&) {
        std::filesystem::remove(home / ".claude/projects/p/2.jsonl");
    };
    EXPECT_EQ(index(vanish).newEvents, 1);
    EXPECT_THAT(
        log.lines(),
        ElementsAre("Tokwatch: indexing 2.jsonl failed: 2.jsonl: No such file or directory"));
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
    service = std::make_unique<IndexerService>(store, locations, utc, ingest, usage);
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

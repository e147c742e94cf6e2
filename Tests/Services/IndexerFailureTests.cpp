#include "Tests/Services/IndexerServiceFixture.h"
#include "Tests/Support/OrdinaryUser.h"

#include <atomic>
#include <filesystem>
#include <limits>

namespace tokwatch {
namespace {

using testing::ClaudeResponse;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string claudeLog = ".claude/projects/p/a.jsonl";

using IndexerFailureTest = IndexerServiceTest;

TEST_F(IndexerFailureTest, GoesOnPastFilesThatCannotBeRead) {
    home.write(".claude/projects/p/1.jsonl", ClaudeResponse{"msg_1"}.line());
    home.write(".claude/projects/p/2.jsonl", ClaudeResponse{"msg_2"}.line());
    ingest = [this](std::span<const UsageEvent> events, const Calendar& calendar) {
        for (const UsageEvent& event : events) {
            if (event.dedupKey == "msg_3") throw UsageStoreError(13, "database or disk is full");
        }
        return store->ingest(events, calendar);
    };
    home.write(".claude/projects/p/3.jsonl", ClaudeResponse{"msg_3"}.line());
    home.write(".claude/projects/p/4.jsonl", ClaudeResponse{"msg_4"}.line());
    const std::filesystem::path gone = home.write(".claude/projects/p/5.jsonl", "x\n");
    const auto removeIt = [&gone](const IndexingProgress&) { std::filesystem::remove(gone); };
    EXPECT_EQ(index(removeIt).newEvents, 3);
    EXPECT_THAT(log.lines(),
                ElementsAre("Tokwatch: indexing 3.jsonl failed: database or disk is full (13)"));
    EXPECT_EQ(indexer().statistics().unreadableFiles, 0) << "what is gone is none";
    EXPECT_EQ(indexer().statistics().unstoredFiles, 1);
    EXPECT_FALSE(store->cursor((home / ".claude/projects/p/3.jsonl").string()).has_value());
    service.reset();
    ingest = {};
    EXPECT_EQ(index().newEvents, 1) << "what could not be stored is read again";
}

TEST_F(IndexerFailureTest, NeverMovesACursorPastASliceThatIsNotStored) {
    std::string lines;
    const std::string noise = R"({"type":"user","content":")" + std::string(3 << 20, 'x') + "\"}\n";
    for (int i = 0; i < 10; ++i)
        lines += ClaudeResponse{"msg_" + std::to_string(i)}.line() + noise;
    home.write(claudeLog, lines);
    std::atomic<bool> failing = true;
    ingest = [this, &failing](std::span<const UsageEvent> events, const Calendar& calendar) {
        if (failing && (events.front().dedupKey != "msg_0" || events.size() == 10))
            throw UsageStoreError(13, "database or disk is full");
        return store->ingest(events, calendar);
    };
    index();
    failing = false;
    index();
    EXPECT_EQ(outputTokens(), 50);
}

TEST_F(IndexerFailureTest, TriesALockedStoreOnceAGroupNotOnceAFile) {
    for (int i = 0; i < 3; ++i) {
        const std::string number = std::to_string(i);
        home.write(".claude/projects/p/" + number + ".jsonl",
                   ClaudeResponse{"msg_" + number}.line());
    }
    int tries = 0;
    ingest = [&tries](std::span<const UsageEvent>, const Calendar&) -> std::int64_t {
        ++tries;
        throw UsageStoreError(5, "database is locked");
    };
    const IndexOutcome outcome = index();
    EXPECT_EQ(tries, 1) << "each try waits for seconds";
    EXPECT_THAT(outcome.unfinished,
                ::testing::Each(::testing::Field(&UnfinishedFile::due, time.now() + Seconds{15})));
    EXPECT_THAT(outcome.unfinished, ::testing::SizeIs(3));
    EXPECT_THAT(log.lines(), ElementsAre("Tokwatch: indexing 0.jsonl failed: database is locked "
                                         "(5); so did 2 other files"));
    EXPECT_EQ(indexer().statistics().unstoredFiles, 3);
    service.reset();
    ingest = {};
    EXPECT_EQ(index().newEvents, 3);
}

TEST_F(IndexerFailureTest, LogsFilesThatItMayNotReadAndReadsTheRest) {
    namespace fs = std::filesystem;
    home.write(".claude/projects/p/1.jsonl", ClaudeResponse{"msg_1"}.line());
    home.write(".claude/projects/p/2.jsonl", ClaudeResponse{"msg_2"}.line());
    home.write(".claude/projects/q/3.jsonl", ClaudeResponse{"msg_3"}.line());
    fs::resize_file(home.write(".grok/sessions/s/usage.json", "{"), 1U << 30U);
    fs::permissions(home.path(), fs::perms{0755});
    fs::permissions(home / ".claude/projects/p/1.jsonl", fs::perms::none);
    fs::permissions(home / ".claude/projects/q", fs::perms::none);
    fs::create_directories(home / ".codex/sessions");
    fs::permissions(home / ".codex/sessions", fs::perms::none);
    {
        const testing::OrdinaryUser user;
        EXPECT_EQ(index().newEvents, 1);
        EXPECT_THAT(log.lines(),
                    ElementsAre("Tokwatch: indexing 1.jsonl failed: 1.jsonl: Permission denied",
                                "Tokwatch: indexing usage.json failed: File too large",
                                "Tokwatch: listing " + (home / ".claude/projects").string() +
                                    " failed: q: Permission denied",
                                "Tokwatch: listing " + (home / ".codex/sessions").string() +
                                    " failed: Permission denied"));
        EXPECT_EQ(indexer().statistics().unreadableFiles, 2);
        EXPECT_EQ(indexer().statistics().unreadableFolders, 2);
        index();
        EXPECT_EQ(log.lines().size(), 6U) << "a folder is named once";
    }
    fs::permissions(home / ".codex/sessions", fs::perms::owner_all);
    fs::permissions(home / ".claude/projects/q", fs::perms::owner_all);
    fs::permissions(home / ".claude/projects/p/1.jsonl", fs::perms::owner_all);
    EXPECT_EQ(index().newEvents, 2);
}

TEST_F(IndexerFailureTest, SurvivesWhatRealLogsHold) {
    const std::string good = ClaudeResponse{"next"}.line();
    const std::string unread = R"({"x":%,)" + ClaudeResponse{"msg_1"}.line().substr(1);
    const auto with = [&unread](const std::string& value) {
        return std::string(unread).replace(unread.find('%'), 1, value);
    };
    const std::string crlf =
        ClaudeResponse{"msg_1"}.line().insert(ClaudeResponse{"msg_1"}.line().size() - 1, "\r");
    struct Case {
        const char* what;
        std::string lines;
        std::int64_t events; ///< the good line at the end included
    };
    const std::vector<Case> cases{
        {"an unpaired surrogate", with(R"("\ud83d")"), 2},
        {"an integer beyond 64 bits", with("123456789012345678901234567890"), 2},
        {"a response of 20 MiB", with('"' + std::string(20 << 20, 'y') + '"'), 2},
        {"a cut line with the next one glued on", with("1").substr(0, 60) + with("1"), 1},
        {"a cut line", with("1").substr(0, 60) + "\n", 1},
        {"CR LF", crlf, 2},
        {"empty lines", "\n\r\n\n", 1},
        {"bytes that are no text", "\xff\xfe\n", 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        // Every case in a store of its own: their keys are the same.
        store = std::make_shared<UsageStore>(":memory:");
        service.reset();
        home.write(claudeLog, c.lines + good);
        EXPECT_EQ(index().newEvents, c.events);
        EXPECT_EQ(index().newEvents, 0);
        EXPECT_EQ(outputTokens(), 5 * c.events);
    }
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(IndexerFailureTest, PassesOverAnEndlessLineOnce) {
    const std::filesystem::path file = home.write(claudeLog, ClaudeResponse{"msg_1"}.line());
    std::filesystem::resize_file(file, 65U << 20U);
    EXPECT_EQ(index().newEvents, 1);
    home.append(claudeLog, "more");
    index();
    EXPECT_EQ(indexer().statistics().providers[0].bytesRead, 4);
    home.append(claudeLog, "\n" + ClaudeResponse{"msg_2"}.line());
    EXPECT_EQ(index().newEvents, 1);
    EXPECT_THAT(log.lines(),
                ElementsAre("Tokwatch: indexing a.jsonl: an endless line is passed over"));
}

TEST_F(IndexerFailureTest, NamesTheFileOfAnAbsurdCount) {
    ClaudeResponse absurd{"msg_1"};
    absurd.input = absurd.output = std::numeric_limits<std::int64_t>::max();
    home.write(claudeLog, absurd.line());
    EXPECT_EXIT(index(), ::testing::ExitedWithCode(1),
                "exceeds 64 bits \\(claude, " + absurd.model + ", " + absurd.timestamp +
                    "; .*/a.jsonl");
}

TEST_F(IndexerFailureTest, KnowsFilesAgainWhoseNamesAreNoText) {
    home.write(".claude/projects/p/new\nline.jsonl", ClaudeResponse{"msg_1"}.line());
    home.write(".claude/projects/p/\xff\xfe.jsonl", ClaudeResponse{"msg_2"}.line());
    EXPECT_EQ(index().newEvents, 2);
    std::int64_t bytes = 0;
    const auto sum = [&bytes](const IndexingProgress& progress) { bytes = progress.bytesRead; };
    index(sum);
    EXPECT_EQ(bytes, 0) << "their cursors were not found";
    home.append(".claude/projects/p/\xff\xfe.jsonl", ClaudeResponse{"msg_3"}.line());
    EXPECT_EQ(index(sum).newEvents, 1);
    EXPECT_EQ(bytes, static_cast<std::int64_t>(ClaudeResponse{"msg_3"}.line().size()));
    store->resetCursors(ProviderID::claude);
    index(sum);
    EXPECT_GT(bytes, 500);
}

} // namespace
} // namespace tokwatch

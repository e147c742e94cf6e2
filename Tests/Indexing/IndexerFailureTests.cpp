#include "Tests/Indexing/IndexerServiceFixture.h"
#include "Tests/Support/OrdinaryUser.h"
#include "Tokwatch/Indexing/SliceReader.h"

#include <array>
#include <limits>

#include <fcntl.h>
#include <sys/stat.h>

namespace tokwatch::testing {

/// A line that is longer than a slice.
const std::string noise = R"({"type":"user","content":")" + std::string(9 << 20, 'x') + "\"}\n";

struct IndexerFailureTest : IndexerServiceTest {
    /// Lets the store fail as with a full disk whenever this response is to be stored.
    void refuse(const char* key) {
        ingest = [this, key](std::span<const UsageEvent> events, const Calendar& calendar) {
            for (const UsageEvent& event : events)
                if (event.dedupKey == key) throw UsageStoreError(13, "database or disk is full");
            return store->ingest(events, calendar);
        };
    }
    std::vector<PendingFile> pendingLog(const std::string& text) {
        home.write(claudeLog, text);
        return {{ProviderID::claude,
                 findLogFiles(ProviderID::claude, home / ".claude/projects").files.at(0),
                 {}}};
    }
};

TEST_F(IndexerFailureTest, CountsNothingThatIsOpenOfAFileThatWasReplacedMeanwhile) {
    const std::vector<PendingFile> files =
        pendingLog(ClaudeResponse{.id = "old", .stopReason = "null"}.line() + noise);
    SliceReader reader(files, time.clock());
    reader.begin(0);
    EXPECT_THAT(reader.next()->events, IsEmpty()) << "it may go on";
    std::filesystem::rename(home.write("new", ClaudeResponse{"new"}.line() + noise),
                            home / claudeLog);
    EXPECT_THAT(reader.next()->events, ElementsAre(Field(&UsageEvent::dedupKey, "new")));
    EXPECT_THAT(reader.next()->events, IsEmpty()) << "nothing waits for the end of the file";
}

TEST_F(IndexerFailureTest, ReadsAgainWhatItStoredElsewhereAndWhatIsToBeReadAgain) {
    for (const bool isAnotherFile : {true, false}) {
        home.write(claudeLog, ClaudeResponse{"msg_1"}.line());
        store = std::make_shared<UsageStore>(home / "data/usage.sqlite");
        ingest = {};
        service.reset();
        index();
        service.reset();
        ingest = [&](std::span<const UsageEvent> events, const Calendar& calendar) {
            const std::int64_t added = store->ingest(events, calendar);
            if (isAnotherFile) {
                std::filesystem::remove_all(home / "data");
                EXPECT_TRUE(store->reattach());
            } else {
                store->resetCursors(ProviderID::claude);
            }
            ingest = {};
            return added;
        };
        home.append(claudeLog, ClaudeResponse{"msg_2"}.line());
        index();
        service.reset();
        index();
        EXPECT_EQ(summary().tokens.output, 10);
        EXPECT_EQ(indexer().statistics().providers[0].bytesRead,
                  std::filesystem::file_size(home / claudeLog));
    }
}

/// With others of its file behind it that could be: in the same group of slices, and in a later
/// one.
TEST_F(IndexerFailureTest, NeverMovesACursorPastASliceThatIsNotStored) {
    for (const int responses : {1, 2'100}) {
        SCOPED_TRACE(responses);
        store = std::make_shared<UsageStore>(":memory:");
        std::string lines;
        for (int i = 0; i < responses; ++i)
            lines += ClaudeResponse{"msg_" + std::to_string(i)}.line();
        home.write(claudeLog, lines + noise + ClaudeResponse{"last"}.line());
        service.reset();
        refuse("msg_0");
        EXPECT_EQ(index().newEvents, 0);
        service.reset();
        ingest = {};
        EXPECT_EQ(index().newEvents, responses + 1);
    }
}

TEST_F(IndexerFailureTest, WaitsAsLongForAResponseWhereItWasStoppedMeanwhile) {
    const Date start = time.now();
    for (const auto& [stated, isHeld] :
         {std::pair{-1.0, true}, {950.0, true}, {-901.0, false}, {1061.0, false}}) {
        const std::string newest = formatISO8601(start + Seconds{stated});
        const std::vector<PendingFile> files =
            pendingLog(ClaudeResponse{.timestamp = newest, .stopReason = "null"}.line());
        int calls = 0;
        SliceReader reader(files, [&] { return start + Seconds{calls++ == 0 ? 0.0 : 1000.0}; });
        reader.begin(0);
        EXPECT_EQ(reader.next()->heldUntil.has_value(), isHeld) << stated;
    }
}

/// A program that is stopped, or sleeps, after it listed the logs finds them longer by slices.
TEST_F(IndexerFailureTest, KeepsAResponseOpenAtTheListedEndOfALogThatGoesOn) {
    ClaudeResponse response{.timestamp = "2026-03-10T12:00:00Z", .stopReason = "null"};
    const std::vector<PendingFile> files = pendingLog(response.line());
    response.output = 500;
    response.stopReason = "\"end_turn\"";
    home.append(claudeLog, noise + response.line());
    SliceReader reader(files, time.clock());
    reader.begin(0);
    std::vector<std::int64_t> counted;
    while (const std::optional<Slice> slice = reader.next())
        for (const UsageEvent& event : slice->events)
            counted.push_back(event.tokens.output);
    EXPECT_THAT(counted, ElementsAre(500));
}

/// By a clock that is ahead, so that the file's time counts: the present one, not the listed.
TEST_F(IndexerFailureTest, JudgesLinesFromTheFutureByTheTimeTheFileHasAsItIsRead) {
    const auto write = [this](double age) {
        const timespec moment{static_cast<time_t>(unixSeconds(time.now()) - age), 0};
        const std::array times{moment, moment};
        EXPECT_EQ(::utimensat(AT_FDCWD, (home / claudeLog).c_str(), times.data(), 0), 0);
    };
    const std::string ahead = formatISO8601(time.now() + Seconds{120});
    const ClaudeResponse open{.id = "open", .timestamp = ahead, .stopReason = "null"};
    home.write(claudeLog, ClaudeResponse{"msg_1"}.line());
    write(100);
    const std::vector<PendingFile> files{
        {ProviderID::claude,
         findLogFiles(ProviderID::claude, home / ".claude/projects").files.at(0),
         {}}};
    home.append(claudeLog, open.line() + ClaudeResponse{"msg_2"}.line());
    write(1);
    SliceReader reader(files, time.clock());
    reader.begin(0);
    EXPECT_THAT(reader.next()->events, SizeIs(2)) << "one may go on";
}

TEST_F(IndexerFailureTest, GoesOnPastFilesThatCannotBeReadOrStored) {
    for (const char* id : {"msg_1", "msg_2", "msg_3"})
        home.write(std::string(".claude/projects/p/\xff\n") + id + ".jsonl", // which is no text
                   ClaudeResponse{id}.line());
    const std::filesystem::path gone = home.write(".claude/projects/q/5.jsonl", "x\n");
    const auto removeIt = [&gone](const IndexingProgress&) { std::filesystem::remove(gone); };
    refuse("msg_2");
    EXPECT_EQ(index(removeIt).newEvents, 2);
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("failed: database or disk is full (13)")));
    EXPECT_EQ(indexer().statistics().unreadableFiles, 0) << "what is gone is none";
    EXPECT_EQ(indexer().statistics().unstoredFiles, 1);
    service.reset();
    ingest = {};
    EXPECT_EQ(index().newEvents, 1) << "what could not be stored is read again";
    index();
    EXPECT_EQ(indexer().statistics().providers[0].bytesRead, 0) << "their cursors are not found";
}

TEST_F(IndexerFailureTest, TriesALockedStoreOnceAGroupNotOnceAFile) {
    for (const std::string number : {"0", "1", "2"})
        home.write(".claude/projects/p/" + number + ".jsonl", ClaudeResponse{number}.line());
    int tries = 0;
    ingest = [&tries](std::span<const UsageEvent>, const Calendar&) -> std::int64_t {
        ++tries;
        throw UsageStoreError(5, "database is locked");
    };
    const IndexOutcome outcome = index();
    EXPECT_EQ(tries, 1) << "each try waits for seconds";
    EXPECT_THAT(outcome.unfinished, Each(Field(&UnfinishedFile::due, time.now() + Seconds{15})));
    EXPECT_THAT(outcome.unfinished, SizeIs(3));
    index(); // and the log holds one line of both
    EXPECT_THAT(log.lines(), ElementsAre("Tokwatch: indexing 0.jsonl failed: database is locked "
                                         "(5); so did 2 other files"));
    EXPECT_EQ(indexer().statistics().unstoredFiles, 3);
    service.reset();
    ingest = {};
    EXPECT_EQ(index().newEvents, 3);
}

TEST_F(IndexerFailureTest, LogsFilesThatItMayNotReadAndReadsTheRest) {
    namespace fs = std::filesystem;
    for (const std::string file : {"p/1", "p/2", "q/3"})
        home.write(".claude/projects/" + file + ".jsonl", ClaudeResponse{file}.line());
    fs::resize_file(home.write(".grok/sessions/s/usage.json", "{"), 1U << 30U);
    fs::permissions(home.path(), fs::perms{0755});
    const fs::path closed[]{home / ".claude/projects/p/1.jsonl", home / ".claude/projects/q"};
    for (const fs::path& path : closed)
        fs::permissions(path, fs::perms::none);
    {
        const OrdinaryUser user;
        EXPECT_EQ(index().newEvents, 1);
        EXPECT_THAT(log.lines(),
                    ElementsAre("Tokwatch: indexing 1.jsonl failed: 1.jsonl: Permission denied",
                                "Tokwatch: indexing usage.json failed: File too large",
                                "Tokwatch: listing " + (home / ".claude/projects").string() +
                                    " failed: q: Permission denied"));
        EXPECT_EQ(indexer().statistics().unreadableFiles, 2);
        EXPECT_EQ(indexer().statistics().unreadableFolders, 1);
        index();
        EXPECT_EQ(log.lines().size(), 5U) << "a folder is named once";
    }
    for (const fs::path& path : closed)
        fs::permissions(path, fs::perms::owner_all);
    EXPECT_EQ(index().newEvents, 2);
}

TEST_F(IndexerFailureTest, SurvivesWhatRealLogsHold) {
    const std::string good = ClaudeResponse{"next"}.line();
    const std::string other = ClaudeResponse{"msg_1"}.line();
    for (const auto& [lines, events] :
         {std::pair{R"({"x":")" + std::string(20 << 20, 'y') + "\"," + other.substr(1), 2},
          {std::string(other).insert(other.size() - 1, "\r"), 2},
          {other.substr(0, 60) + other, 1},
          {"\n\r\n\n\xff\xfe\n", 1}}) {
        SCOPED_TRACE(lines.substr(0, 20));
        // Every case in a store of its own: their keys are the same.
        startOver();
        home.write(claudeLog, lines + good);
        EXPECT_EQ(index().newEvents, events);
        EXPECT_EQ(index().newEvents, 0);
        EXPECT_EQ(outputTokens(), 5 * events);
    }
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(IndexerFailureTest, PassesOverAnEndlessLineOnce) {
    const std::filesystem::path file = home.write(claudeLog, ClaudeResponse{"msg_1"}.line());
    std::filesystem::resize_file(file, 513U << 20U);
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
    EXPECT_EXIT(index(), ExitedWithCode(1),
                "exceeds 64 bits \\(claude, " + std::string(absurd.model) + ", " +
                    absurd.timestamp + "; .*/a.jsonl");
}

} // namespace tokwatch::testing

#include "Tests/Indexing/IndexerServiceFixture.h"
#include "Tokwatch/Indexing/SliceEvents.h"
#include "TokwatchCore/Ingestion/LogFiles.h"

#include <algorithm>
#include <array>
#include <future>
#include <random>

#include <fcntl.h>
#include <sys/stat.h>

namespace tokwatch::testing {

const std::string codexLog = ".codex/sessions/2026/03/10/rollout.jsonl";

TEST_F(IndexerServiceTest, ReadsNoMoreThanItsScope) {
    const std::filesystem::path named = home.write(claudeLog, ClaudeResponse{"msg_1"}.line());
    home.write(".claude/projects/p/other.jsonl", ClaudeResponse{"msg_2"}.line());
    home.write(codexLog, CodexLog::session("S") + CodexLog::model("gpt-5-codex"));
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
    EXPECT_EQ(pass({}), 1) << "the rest is left for a pass over all files";
    home.append(codexLog, CodexLog::usage("r1", 100, 7));
    EXPECT_EQ(pass({}), 1);
    EXPECT_EQ(summary().models.at(0).model, "gpt-5-codex") << "as an earlier pass has read";
    EXPECT_EQ(indexer().providerForChangedPath(named.string()), ProviderID::claude);
    EXPECT_EQ(indexer().providerForChangedPath((home / codexLog).string()), ProviderID::codex);
    for (const char* other : {".claude/projects-old/a.jsonl", ".claude/projects", ".codex/x.jsonl"})
        EXPECT_EQ(indexer().providerForChangedPath((home / other).string()), std::nullopt) << other;
}

TEST_F(IndexerServiceTest, HoldsAResponseBackThatMayGoOn) {
    struct Case {
        const char *stopReason, *newestLine;
        bool isHeld = false; ///< for a minute after its newest line; it is 12:30
    };
    for (const auto& [stopReason, newestLine, isHeld] :
         {Case{"null", "2026-03-10T12:29:00.001Z", true},
          Case{"null", "2026-03-10T12:31:00Z", true}, Case{"null", "2026-03-10T12:29:00Z"},
          Case{"null", "2026-03-10T12:31:00.001Z"}, Case{"\"null\"", "2026-03-10T12:29:59Z"},
          Case{"\"end_turn\"", "2026-03-10T12:29:59Z"}, Case{"", "2026-03-10T12:29:59Z"}}) {
        SCOPED_TRACE(std::string(stopReason) + " at " + newestLine);
        startOver();
        ClaudeResponse response{.id = "msg_2", .stopReason = "null"};
        const std::string before = ClaudeResponse{"msg_1"}.line();
        const std::string first = response.line() + ClaudeResponse{"msg_3"}.line();
        response.stopReason = stopReason;
        response.timestamp = newestLine;
        response.output = 500;
        const std::string path = home.write(claudeLog, before + first + response.line());
        IndexOutcome expected{isHeld ? 2 : 3, false, {}};
        if (isHeld) expected.unfinished = {{path, *parseISO8601(newestLine) + Seconds{60}}};
        EXPECT_EQ(index(), expected);
        EXPECT_EQ(store->cursor(path)->offset,
                  isHeld ? before.size() : std::filesystem::file_size(path));
        EXPECT_EQ(outputTokens(), isHeld ? 10 : 510);
        EXPECT_EQ(index().newEvents, 0) << "what follows it is read again, and counted once";
    }
}

/// As in a container whose clock is ahead.
TEST_F(IndexerServiceTest, HoldsAResponseFromTheFutureBackByTheTimeOfItsFile) {
    ClaudeResponse response{.timestamp = "2026-03-10T13:30:00Z", .output = 2, .stopReason = "null"};
    home.write(claudeLog, "");
    const auto write = [&](const char* fileTime) {
        home.append(claudeLog, response.line());
        const timespec moment{static_cast<time_t>(unixSeconds(*parseISO8601(fileTime))), 0};
        const std::array times{moment, moment};
        EXPECT_EQ(::utimensat(AT_FDCWD, (home / claudeLog).c_str(), times.data(), 0), 0);
    };
    write("2026-03-10T12:29:50Z"); // it is 12:30
    EXPECT_EQ(index().newEvents, 0);
    response.output = 900;
    response.stopReason = R"("end_turn")";
    write("2026-03-10T12:30:00Z");
    EXPECT_EQ(index().newEvents, 1);
    EXPECT_EQ(outputTokens(), 900);
}

TEST_F(IndexerServiceTest, CountsAHeldResponseOnceItGoesNoFurther) {
    ClaudeResponse response{
        .id = "msg_1", .timestamp = "2026-03-10T12:30:00Z", .stopReason = "null"};
    home.write(claudeLog, response.line());
    EXPECT_EQ(index().newEvents, 0);
    // An agent answers meanwhile, at length; that need not wait for the conversation.
    home.append(claudeLog, R"({"type":"user","x":")" + std::string(9 << 20, 'y') + "\"}\n" +
                               ClaudeResponse{"msg_2"}.line());
    EXPECT_EQ(index().newEvents, 1);
    EXPECT_EQ(index().newEvents, 0);
    time.advance(Seconds{60});
    EXPECT_EQ(index(), (IndexOutcome{1, false})) << "its writer may have died";
    EXPECT_EQ(index(), (IndexOutcome{0, false}));
    EXPECT_EQ(indexer().statistics().providers[0].bytesRead, 0);
    // After the last one of a log comes what its assistant takes minutes for.
    response = {.id = "msg_3", .timestamp = "2026-03-10T12:31:00Z", .stopReason = "null"};
    home.append(claudeLog, response.line());
    time.advance(Seconds{899});
    EXPECT_EQ(index().newEvents, 0);
    time.advance(Seconds{1});
    EXPECT_EQ(index().newEvents, 1);
}

TEST_F(IndexerServiceTest, LosesNothingOfWhatIsStreamedBetweenItsPasses) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        startOver();
        home.write(claudeLog, "");
        std::minstd_rand random(seed);
        const auto upTo = [&random](unsigned limit) {
            return static_cast<unsigned>(random()) % limit;
        };
        // The conversation and its agents, who write into one log side by side.
        std::array<ClaudeResponse, 3> writers;
        std::array<unsigned, 3> linesLeft{};
        std::string unwritten;
        std::int64_t responses = 0;
        std::int64_t counted = 0;
        for (int step = 0; step < 100; ++step) {
            time.advance(Seconds{0.2 + upTo(28) / 10.0});
            const unsigned who = upTo(3);
            ClaudeResponse& response = writers.at(who);
            if (linesLeft.at(who)-- == 0) {
                response = {.id = "msg_" + std::to_string(responses++)};
                linesLeft.at(who) = upTo(5);
            }
            response.timestamp = formatISO8601(time.now());
            response.output += upTo(100);
            // Some are broken off: nothing more comes, and then another one begins.
            const bool isLast = linesLeft.at(who) == 0 && upTo(8) > 0;
            response.stopReason = isLast ? "\"tool_use\"" : "null";
            unwritten += response.line() + (upTo(3) == 0 ? "{\"type\":\"user\"}\n" : "");
            // Writes end anywhere in a line.
            const std::size_t written = unwritten.size() - upTo(2) * 30;
            home.append(claudeLog, unwritten.substr(0, written));
            unwritten.erase(0, written);
            if (upTo(3) == 0) counted += index().newEvents;
        }
        home.append(claudeLog, unwritten);
        time.advance(SliceEvents::lastPatience);
        EXPECT_EQ(counted + index().newEvents, responses);
        const UsageSummary followed = summary();
        startOver();
        index();
        EXPECT_EQ(followed, summary());
    }
}

TEST_F(IndexerServiceTest, StoresTheNewestCodexLimits) {
    const auto fetched = [this](Date fetchedAt, std::size_t windows = 1) {
        store->setLimits({{}, std::vector<LimitWindow>(windows), {}, {}, fetchedAt},
                         ProviderID::codex);
    };
    home.write(codexLog, CodexLog::limits(20, "2026-03-10T12:20:00Z") +
                             CodexLog::limits(10, "2026-03-10T12:00:00Z"));
    home.write(".codex/archived_sessions/old.jsonl", CodexLog::limits(99, "2026-03-01T12:00:00Z"));
    EXPECT_EQ(index(), (IndexOutcome{0, true}));
    const auto used = [this] {
        return store->limits(ProviderID::codex)->windows.at(0).usedFraction;
    };
    EXPECT_EQ(used(), 0.2);
    home.append(codexLog, CodexLog::limits(30, "2026-03-10T12:20:00Z"));
    EXPECT_EQ(index(), (IndexOutcome{0, false})) << "it is no newer";
    fetched(time.now());
    home.append(codexLog, CodexLog::limits(40, "2026-03-10T12:29:59Z"));
    EXPECT_EQ(index(), (IndexOutcome{0, false})) << "a fetch was later";

    fetched(time.now(), 0);
    home.append(codexLog, CodexLog::limits(45, "2026-03-10T12:29:59Z"));
    EXPECT_EQ(index(), (IndexOutcome{0, true})) << "an attempt without windows is no newer";

    // What a wrong clock dated ahead counts as of now, and does not stand in the way.
    fetched(time.now() + Seconds{3600});
    home.append(codexLog, CodexLog::limits(60, "2026-03-11T12:00:00Z"));
    EXPECT_EQ(index(), (IndexOutcome{0, true}));
    EXPECT_EQ(used(), 0.6);
    EXPECT_EQ(store->limits(ProviderID::codex)->fetchedAt, time.now());
}

TEST_F(IndexerServiceTest, ReadsAFileLargerThanASliceInOnePass) {
    ClaudeResponse longest{.id = "longest", .output = 1, .stopReason = "null"};
    std::string lines = longest.line();
    const std::string noise = R"({"type":"user","content":")" + std::string(1 << 20, 'x') + "\"}\n";
    for (int i = 0; i < 19; ++i) {
        // Slices end between a response's lines, too.
        ClaudeResponse response{.id = std::to_string(i), .output = 1, .stopReason = "null"};
        lines += response.line() + noise;
        response.output = 5;
        response.stopReason = "\"end_turn\"";
        lines += response.line();
    }
    longest.output = 5;
    home.write(claudeLog, lines += longest.line());
    std::vector<std::int64_t> seen;
    const auto note = [&](const IndexingProgress& progress) { seen.push_back(progress.bytesRead); };
    EXPECT_EQ(index(note).newEvents, 20);
    ASSERT_GE(seen.size(), 3U);
    EXPECT_TRUE(std::ranges::is_sorted(seen));
    EXPECT_EQ(seen.back(), static_cast<std::int64_t>(lines.size()));
    EXPECT_EQ(outputTokens(), 100);
}

/// Of a response that stands in two files the first one counts, of limits the newest, and a file is
/// left alone once it cannot be read.
TEST_F(IndexerServiceTest, StoresTheSameHoweverManyThreadsRead) {
    const std::string filler =
        R"({"type":"user","content":")" + std::string(1 << 18, 'x') + "\"}\n";
    for (int i = 0; i < 48; ++i) {
        const std::string name = std::to_string(i * 37 % 48);
        std::string claude;
        std::string codex = CodexLog::session("s" + name) + CodexLog::model("gpt-5");
        for (int line = 0; line < i * 5 % 40; ++line) {
            const int output = i + line;
            claude += ClaudeResponse{.id = std::to_string(line * i % 97), .output = output}.line();
            codex += CodexLog::usage(std::to_string(line * i % 89), 1, output) +
                     CodexLog::limits(output);
        }
        home.write(".claude/projects/p/" + name + ".jsonl", claude + filler + claude);
        home.write(".codex/sessions/" + name + ".jsonl", codex + filler + codex);
    }
    home.write(".claude/projects/p/huge.jsonl", ClaudeResponse{"first"}.line() +
                                                    std::string(9 << 20, 'x') + "\n" +
                                                    ClaudeResponse{"last"}.line());
    const auto pass = [this](std::size_t readers) {
        store = std::make_shared<UsageStore>(":memory:");
        std::vector<std::int64_t> bytes;
        Indexer all(store, locations, days, time.clock(), {}, readers);
        const IndexOutcome outcome = all.pass(
            [&](const IndexingProgress& progress) { bytes.push_back(progress.bytesRead); });
        return std::tuple(outcome, summary(), store->cursorTexts(),
                          store->limits(ProviderID::codex), bytes);
    };
    const auto alone = pass(1);
    EXPECT_GT(std::get<0>(alone).newEvents, 50);
    for (const std::size_t readers : {2U, 8U})
        EXPECT_EQ(pass(readers), alone) << readers;
}

TEST_F(IndexerServiceTest, FindsEachLogOnceWhoeverListsItsFolder) {
    constexpr int folders = 300; // which several threads share
    for (int i = 0; i < folders; ++i)
        home.write(".claude/projects/" + std::to_string(i) + "/inner/a.jsonl",
                   ClaudeResponse{"msg_" + std::to_string(i)}.line());
    const LogListing listing = findLogFiles(ProviderID::claude, home / ".claude/projects");
    EXPECT_EQ(listing.files.size(), folders);
    EXPECT_TRUE(std::ranges::is_sorted(listing.files, {}, &LogFile::path));
    EXPECT_EQ(index().newEvents, folders);
}

TEST_F(IndexerServiceTest, RunsOnePassAtATimeAndKeepsOneWaiting) {
    home.write(claudeLog, ClaudeResponse{"msg_1"}.line());
    int passes = 0; // which a thread of the indexer's own counts, one by one
    std::promise<void> begun;
    std::promise<void> goOn;
    ingest = [&, held = goOn.get_future().share()](std::span<const UsageEvent> events,
                                                   const Calendar& calendar) {
        if (++passes == 1) begun.set_value();
        held.wait();
        return store->ingest(events, calendar);
    };
    QFuture<IndexOutcome> first = indexer().index();
    begun.get_future().wait();
    home.append(claudeLog, ClaudeResponse{"msg_2"}.line());
    QFuture<IndexOutcome> second;
    for (int i = 0; i < 100'000; ++i)
        second = indexer().index();
    goOn.set_value();
    EXPECT_EQ(first.result().newEvents, 1);
    EXPECT_EQ(second.result().newEvents, 1);
    EXPECT_EQ(index().newEvents, 0);
    EXPECT_EQ(passes, 2);
}

} // namespace tokwatch::testing

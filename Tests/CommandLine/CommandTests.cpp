#include "Tests/CommandLine/CommandFixture.h"
#include "TokwatchCore/Store/SQLite.h"

namespace tokwatch::testing {

TEST_F(CommandTest, RefusesWhatItDoesNotUnderstand) {
    for (const char* words :
         {"frobnicate", "summary --frobnicate", "summary --days many", "summary --days 0",
          "summary --days ", "summary --unit euros", "summary --by hour", "reread", "reread Claude",
          "reread claude codex", "limits --provider gemini", "status --format xml",
          "status --format text --json", "preferences get colour", "preferences set showDockIcon",
          "preferences set warningThreshold much", "index --home", "index extra"})
        expectRefused(words);
    expectRefused("export --output ", "no file is named");
    expectRefused("sumary", "did you mean \"summary\"?");
    expectRefused("preferences get pinned", "did you mean \"pinnedProvider\"?");
}

TEST_F(CommandTest, SaysWhatIsMissing) {
    const std::string file = world.write("home/file", "").string();
    const std::string home = (world / "home").string();
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"summary", "--home", home + "/nowhere"},
          {"index", "--home", file},
          {"index", "--home", home, "--data-dir", file},
          {"summary", "--home", home, "--data-dir", "/proc/self/none"}})
        expectFailure(tokwatch(arguments, {"HOME=" + home}), 1);
    expectFailure(tokwatch({}), 1, "summary"); // as there is no display
    expectFailure(tokwatch({}, {"DISPLAY=:987"}), 1);
}

TEST_F(CommandTest, IndexesOnceAndSaysWhatCouldNotBeRead) {
    writeToday("a.jsonl", "msg_1");
    const Json first = json({"index"});
    EXPECT_EQ(first["newEvents"], 1);
    EXPECT_EQ(first["unreadableFiles"], 0);
    EXPECT_EQ(json({"reread", "claude"})["bytesRead"], first["bytesRead"]);
    EXPECT_THAT(here({"index"}).out, HasSubstr("0 new events, 0 B read in "));
    sqlite::Connection(database()).execute("UPDATE cursors SET json = '{}'");
    const ProgramResult indexed = here({"index", "--json"});
    EXPECT_EQ(indexed.status, 1);
    EXPECT_EQ(parseJson(indexed.out)["unreadableFiles"], 1);
    EXPECT_THAT(indexed.err, HasSubstr("tokwatch: 1 file could not be read\n"));
    const ProgramResult reread = here({"reread", "claude"});
    EXPECT_EQ(reread.status, 1);
    EXPECT_THAT(reread.err, HasSubstr("do not decode"));
    EXPECT_EQ(here({"reread", "codex"}).status, 1) << "the pass meets it all the same";
}

TEST_F(CommandTest, SummarisesADemoHome) {
    ASSERT_EQ(makeDemo("home"), 0);
    const UsageSummary summary = decode<UsageSummary>(json({"summary"}), DateCoding::iso8601);
    EXPECT_EQ(summary.days, 30);
    EXPECT_EQ(summary.tools.size(), 3U);
    EXPECT_EQ(summary.daily.size(), 90U);
    EXPECT_GT(summary.totalCostUSD, 10);
    EXPECT_TRUE(summary.hasUnknownPrices);

    const std::string text = here({"summary"}).out;
    for (const char* part :
         {"Last 30 days", " · API estimate", "Claude", "claude-opus-5-5", "~$", "—", "█"})
        EXPECT_THAT(text, HasSubstr(part));
    EXPECT_EQ(text.find('\033'), std::string::npos) << "no colour outside a terminal";
    const std::string tools = here({"summary", "--by", "tool", "--unit", "tokens"}).out;
    EXPECT_EQ(tools.find("claude-opus"), std::string::npos);
    EXPECT_LT(tools.find("tokens"), tools.find("API estimate"));

    // The script that made the home touches nobody else's files, not through a link either.

    world.write("mine/.claude/projects/p/mine.jsonl", "mine");
    EXPECT_EQ(makeDemo("mine", "3"), 1);
    std::filesystem::remove_all(world / "home/.claude");
    std::filesystem::create_directory_symlink(world / "mine/.claude", world / "home/.claude");
    EXPECT_EQ(makeDemo("home", "4"), 1);
    EXPECT_EQ(world.read("mine/.claude/projects/p/mine.jsonl"), "mine");
    EXPECT_FALSE(std::filesystem::exists(world / "mine/.claude/projects/-home-dev-notes"));
    EXPECT_EQ(makeDemo("another", "0"), 2);
}

TEST_F(CommandTest, NamesWhereItLookedWhenThereIsNothing) {
    std::filesystem::create_directories(world / "home/.claude/projects");
    const ProgramResult result = here({"summary", "--days", "7"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, StartsWith("No usage in the last 7 days\n"));
    for (const char* path :
         {".claude/projects          nothing in these days", ".codex/sessions           not found",
          ".codex/archived_sessions", ".grok/sessions"})
        EXPECT_THAT(result.out, HasSubstr(path));
}

TEST_F(CommandTest, SaysWhenTheStoreIsBrokenAndKeepsIt) {
    writeToday("a.jsonl", "msg_1");
    const std::string garbage(10'000, 'x');
    world.write("data/Tokwatch/usage.sqlite", garbage);
    world.write("data/Tokwatch/history.sqlite", garbage);
    std::filesystem::create_directory(world / "data/Tokwatch/counts.sqlite");
    for (const char* command : {"index", "summary", "doctor"}) {
        const ProgramResult result = here({command});
        EXPECT_EQ(result.status, 1) << command;
        EXPECT_THAT(result.out + result.err, HasSubstr("file is not a database")) << command;
    }
    const std::string found = here({"doctor"}).out;
    for (const char* remedy : {"usage.sqlite cannot be used: file is not a database (26); move it",
                               "history.sqlite cannot be used: file is not a database (26); it can",
                               "something else than a file in its place (14); it can be deleted"})
        EXPECT_THAT(found, HasSubstr(remedy));
    for (const char* file : {"usage.sqlite", "history.sqlite"})
        EXPECT_EQ(world.read(std::string("data/Tokwatch/") + file), garbage);
}

TEST_F(CommandTest, LosesNothingWhenTheDiskIsFull) {
    writeToday("first.jsonl", "msg_", 200);
    EXPECT_EQ(json({"index"})["newEvents"], 200);
    for (int i = 1; i < 40; ++i)
        writeToday(std::to_string(i) + ".jsonl", "msg_" + std::to_string(i) + "_", 200);
    const ProgramResult full =
        runProgram({"prlimit", "--fsize=150000", TOKWATCH_PROGRAM, "index", "--home",
                    (world / "home").string(), "--data-dir", (world / "data").string()});
    EXPECT_EQ(full.status, 1);
    EXPECT_THAT(full.err, HasSubstr("could not be stored; the next run reads it again"));
    EXPECT_THAT(full.err, HasSubstr("; so did "));
    EXPECT_EQ(std::count(full.err.begin(), full.err.end(), '\n'), 2) << full.err;
    // Room again: what was stored is still there, and the rest follows.
    json({"index"});
    EXPECT_EQ(json({"summary"})["tokens"]["output"], 40 * 200 * 5);
}

TEST_F(CommandTest, ExaminesTheInstallation) {
    writeToday("a.jsonl", "msg_1");
    world.write("home/.codex/auth.json", R"({"tokens":{"access_token":"SECRET"}})");
    std::filesystem::create_directories(world / "home/.grok");
    world.write("home/.grok/sessions", "a file, not a directory");
    world.write("home/.config/claude/projects/b.jsonl", "");
    world.write("config/Tokwatch/Tokwatch.conf", "[General]\nno setting\nnoSuchKey=7\n");
    world.write("config/Tokwatch/Notifications.conf", "quietFrom=25:99\n");
    world.write("config/Tokwatch/Widget.conf", "frames=rubbish\n");
    world.write("config/Tokwatch/Updates.conf", "agreed=maybe\n");
    here({"index"});
    std::filesystem::permissions(database().parent_path(), std::filesystem::perms{0755});
    std::filesystem::permissions(database(), std::filesystem::perms{0644});
    const ProgramResult result = here({"doctor"});
    EXPECT_EQ(result.status, 1) << "something is broken here";
    for (const char* part :
         {".claude/projects: 1 file", ".codex/sessions does not exist", "is not a directory",
          ".config/claude is there, which is not read", "auth.json is there", "is sound",
          "as of 20", "usage.sqlite is open to other users; tokwatch doctor --fix", "line 2 of",
          "Tokwatch.conf is \"7\", but no setting has that name; nobody reads it",
          "is \"25:99\", not a time of day from 0:00 to 23:59; it counts as \"22:00\"",
          "frames in ", "Updates.conf is \"maybe\", not true or false; it counts as \"false\"",
          "Days are counted in UTC", "2 directories to watch, the system allows ",
          "refresh requests are not heard"})
        EXPECT_THAT(result.out, HasSubstr(part));
    EXPECT_EQ(result.out.find("SECRET"), std::string::npos);
    EXPECT_THAT(here({"doctor", "--fix"}).out, HasSubstr("was open to other users and is closed"));
    EXPECT_THAT(here({"doctor"}).out, HasSubstr("what is stored is open to you alone"));
}

} // namespace tokwatch::testing

#include "TokwatchCore/Ingestion/LogFiles.h"

#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/Testing.h"
#include "TokwatchCore/Ingestion/JSONLTail.h"
#include "TokwatchCore/Ingestion/LogsElsewhere.h"

#include <system_error>

namespace tokwatch::testing {

struct JSONLTailTest : Test {
    /// Reads on from where the last call stopped.
    std::vector<std::string> readOn(std::int64_t maxBytes = JSONLTail::sliceBytes) {
        const std::filesystem::path path = home / "log.jsonl";
        const JSONLTail::Result result =
            JSONLTail::read({path.string(), fileAttributes(path)}, cursor, maxBytes, buffer);
        cursor = result.cursor;
        reset = result.reset;
        bytesRead = result.bytesRead;
        return {result.lines.begin(), result.lines.end()};
    }

    TemporaryDirectory home;
    TailBuffer buffer;
    std::optional<FileCursor> cursor;
    bool reset = false;
    std::int64_t bytesRead = 0;
};

TEST_F(JSONLTailTest, ReadsInWindowsWithoutLosingOrRepeatingALine) {
    std::string contents;
    std::vector<std::string> expected;
    for (std::size_t i = 0; i < 200; ++i) {
        expected.push_back(std::string(i * 7 % 40, 'x') + std::to_string(i));
        contents += expected.back() + "\n";
    }
    home.write("log.jsonl", contents);
    for (const std::int64_t window : {-5LL, 1LL, 2LL, 41LL, 64LL, 5000LL, 100000LL}) {
        cursor.reset();
        std::vector<std::string> all;
        do {
            for (std::string& line : readOn(window))
                all.push_back(std::move(line));
            ASSERT_FALSE(reset);
        } while (bytesRead > 0);
        EXPECT_EQ(all, expected) << window;
    }
}

TEST_F(JSONLTailTest, StartsOverWhenTheFileWasReplacedOrShrank) {
    home.write("log.jsonl", "one\n");
    readOn();
    cursor->context["model"] = "m";
    EXPECT_THAT(readOn(), IsEmpty());
    EXPECT_EQ(cursor->context["model"], "m");
    home.write("other", "uno\ndos\n");
    std::filesystem::rename(home / "other", home / "log.jsonl");
    EXPECT_THAT(readOn(), ElementsAre("uno", "dos"));
    EXPECT_TRUE(reset);
    EXPECT_THAT(cursor->context, IsEmpty());
    home.write("log.jsonl", "new\r\n\n");
    EXPECT_THAT(readOn(), ElementsAre("new", ""));
    EXPECT_TRUE(reset);
}

TEST_F(JSONLTailTest, ThrowsWhatTheFileSystemSays) {
    EXPECT_THROW(readOn(), std::system_error);
    std::filesystem::create_directory(home / "log.jsonl");
    home.write("log.jsonl/inner", "x\n");
    cursor = FileCursor{(home / "log.jsonl").string(), 0, 0, {}};
    EXPECT_THROW(readOn(), std::system_error);
}

std::vector<std::string> namesUnder(const std::filesystem::path& root,
                                    ProviderID provider = ProviderID::claude) {
    std::vector<std::string> names;
    for (const LogFile& file : findLogFiles(provider, root).files)
        names.push_back(file.path.substr(root.string().size() + 1));
    return names;
}

TEST(LogFiles, AreRegularVisibleFilesOfTheRightNameInPathOrder) {
    const TemporaryDirectory home;
    for (const char* name :
         {"root/b/2.jsonl", "root/b/1.jsonl", "root/a.jsonl", "root/B.jsonl", "root/b-1.jsonl",
          "root/.hidden.jsonl", "root/.hidden/x.jsonl", "root/b/.hidden/x.jsonl", "root/notes.txt",
          "root/c.jsonl.bak", "root/.jsonl", "root/x.JSONL", "root/deep/er/st.jsonl"})
        home.write(name, "x\n");
    std::filesystem::create_directory(home / "root/directory.jsonl");
    std::filesystem::create_symlink(home / "root/a.jsonl", home / "root/link.jsonl");
    std::filesystem::create_directory_symlink(home / "root/b", home / "root/linked");
    EXPECT_THAT(namesUnder(home / "root"),
                ElementsAre("B.jsonl", "a.jsonl", "b-1.jsonl", "b/1.jsonl", "b/2.jsonl",
                            "deep/er/st.jsonl"));
    EXPECT_EQ(findLogFiles(ProviderID::claude, home / "root").files[0].attributes.size, 2);

    // One by one, whatever a watcher may report, they are the same.
    std::vector<std::string> single;
    using Walk = std::filesystem::recursive_directory_iterator;
    for (const auto& entry :
         Walk(home / "root", std::filesystem::directory_options::follow_directory_symlink)) {
        if (const auto file = findLogFile(ProviderID::claude, home / "root", entry.path().native()))
            single.push_back(file->path.substr((home / "root").string().size() + 1));
    }
    EXPECT_THAT(single, UnorderedElementsAreArray(namesUnder(home / "root")));
    for (const char* path : {"root/absent.jsonl", "roots/a.jsonl", "root"})
        EXPECT_FALSE(findLogFile(ProviderID::claude, home / "root", (home / path).native()));
}

TEST(LogFiles, OfGrokAreItsUsageDocuments) {
    const TemporaryDirectory home;
    for (const char* name : {"s/1/usage.json", "s/2/usage.json", "s/2/Usage.json",
                             "s/2/usage.jsonl", "s/usage.json.tmp"})
        home.write(name, "{}");
    EXPECT_THAT(namesUnder(home / "s", ProviderID::grok),
                ElementsAre("1/usage.json", "2/usage.json"));
    EXPECT_THAT(namesUnder(home / "s", ProviderID::cursor), IsEmpty());
}

TEST(LogFiles, AreFoundUnderALinkedRootAndWithAnyName) {
    const TemporaryDirectory home;
    home.write("real/new\nline.jsonl", "");
    home.write("real/\xff\xfe.jsonl", "");
    std::filesystem::create_directory_symlink(home / "real", home / "root");
    EXPECT_THAT(namesUnder(home / "root"), ElementsAre("new\nline.jsonl", "\xff\xfe.jsonl"));
    for (const char* root : {"root", "real"}) {
        const std::string path = (home / root / "new\nline.jsonl").string();
        EXPECT_EQ(findLogFile(ProviderID::claude, home / "root", path).value().path,
                  (home / "root/new\nline.jsonl").string());
    }
}

TEST(ProviderLocations, TellWhichAssistantsLeftTraces) {
    for (const auto& [path, present] :
         {std::pair{".claude/projects", std::optional(ProviderID::claude)},
          {".claude", {}},
          {".codex/sessions", ProviderID::codex},
          {".codex/auth.json", ProviderID::codex},
          {".codex/archived_sessions", {}},
          {".grok/sessions", ProviderID::grok},
          {"Library/Application Support/Cursor/User/globalStorage/state.vscdb", ProviderID::cursor},
          {".config/Cursor/User/globalStorage/state.vscdb", ProviderID::cursor}}) {
        const TemporaryDirectory home;
        std::filesystem::create_directories(home / path);
        for (const ProviderID provider : allCases<ProviderID>)
            EXPECT_EQ(ProviderLocations{home.path()}.isPresent(provider), provider == present)
                << path;
    }
}

TEST(LogsElsewhere, AreMadeVisibleByALinkThatTakesNothingAway) {
    struct Case {
        std::vector<const char*> folders; ///< below the home
        const char* told;                 ///< in CODEX_HOME, "~" for the home
        const char* remedy;               ///< empty where nothing is elsewhere
    };
    for (const auto& [folders, told, remedy] :
         {Case{{"x/sessions"}, "~/x", "ln -s ~/x ~/.codex"},
          Case{{"x/sessions", ".codex"}, "~/x", "ln -s ~/x/sessions ~/.codex/sessions"},
          Case{{"x/sessions", ".codex/sessions"},
               "~/none,~/x",
               "mv ~/.codex/sessions ~/.codex/sessions.before && "
               "ln -s ~/x/sessions ~/.codex/sessions"},
          Case{{"it's/sessions"}, "~/it's", "ln -s '~/it'\\''s' ~/.codex"},
          Case{{".codex/sessions"}, "~/.codex", ""}, Case{{"x"}, "~/x", ""},
          Case{{}, "sessions", ""},
          Case{{".config/claude/projects"}, "", "ln -s ~/.config/claude ~/.claude"}}) {
        const TemporaryDirectory home;
        for (const char* folder : folders)
            std::filesystem::create_directories(home / folder);
        const auto inHome = [&](std::string text) {
            for (std::size_t at = 0; (at = text.find('~')) != std::string::npos;)
                text.replace(at, 1, home.path().native());
            return text;
        };
        const auto variable = [&](std::string_view name) -> std::optional<std::string> {
            if (name != "CODEX_HOME") return std::nullopt;
            return inHome(told);
        };
        std::string remedies;
        for (const LogsElsewhere& place : logsElsewhere(ProviderLocations{home.path()}, variable))
            remedies += place.remedy;
        EXPECT_EQ(remedies, inHome(remedy)) << told;
    }
}

} // namespace tokwatch::testing

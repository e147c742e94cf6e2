#include "Tests/Support/TemporaryDirectory.h"
#include "TokwatchCore/Ingestion/LogFiles.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::TemporaryDirectory;

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
          "root/.hidden.jsonl", "root/.hidden/x.jsonl", "root/notes.txt", "root/c.jsonl.bak",
          "root/.jsonl", "root/x.JSONL", "root/deep/er/st.jsonl"})
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
    EXPECT_THAT(single, ::testing::UnorderedElementsAreArray(namesUnder(home / "root")));
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

} // namespace
} // namespace tokwatch

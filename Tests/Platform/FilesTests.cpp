#include "Platform/System/PrivateFiles.h"

#include "Platform/System/OwnLinks.h"
#include "Platform/System/WholeFile.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace tokwatch {
namespace {

namespace fs = std::filesystem;

unsigned modeOf(const fs::path& path) {
    return static_cast<unsigned>(fs::status(path).permissions());
}

TEST(WholeFile, IsARegularOneOfABoundedSize) {
    const testing::TemporaryDirectory home;
    const std::string bytes("a\0\377\n", 4);
    home.write("file", bytes);
    home.write("large", "12345");
    ::mkfifo((home / "pipe").c_str(), 0600);
    fs::create_symlink("loop", home / "loop");
    for (const auto& [file, obstacle] : {std::pair{"file", 0},
                                         {"missing", ENOENT},
                                         {"file/below", ENOTDIR},
                                         {".", EINVAL},
                                         {"pipe", EINVAL},
                                         {"loop", ELOOP},
                                         {"large", EFBIG}}) {
        std::error_code found;
        EXPECT_EQ(readWholeFile(home / file, 4, found).value_or("none"),
                  obstacle == 0 ? bytes : "none");
        EXPECT_EQ(found.value(), obstacle) << file;
    }
    EXPECT_FALSE(readWholeFile("/dev/zero", 4));
}

TEST(PrivateFiles, ArePrivateWithAllFoldersOnTheWayWhateverTheUmask) {
    const testing::TemporaryDirectory home;
    for (const mode_t mask : {mode_t{0}, mode_t{0377}}) {
        const fs::path top = home / ("top" + std::to_string(mask));
        const mode_t before = ::umask(mask);
        makePrivateDirectory(top / "middle/data");
        createPrivately(top / "middle/data/store");
        openPrivately(top / "middle/data/lock");
        replacePrivately(top / "middle/data/note", "text");
        ::umask(before);
        for (const auto& entry : fs::recursive_directory_iterator(top))
            EXPECT_EQ(modeOf(entry.path()), entry.is_directory() ? 0700U : 0600U) << entry.path();
        EXPECT_EQ(modeOf(top), 0700U);
    }
    home.write("file", "");
    EXPECT_THROW(makePrivateDirectory(home / "file/below"), std::system_error);
    fs::permissions(home / "top0", fs::perms{0755});
    makePrivateDirectory(home / "top0/middle");
    EXPECT_EQ(modeOf(home / "top0"), 0755U) << "what exists is the user's own affair";
}

TEST(PrivateFiles, FollowTheUsersOwnLinks) {
    const testing::TemporaryDirectory home;
    fs::create_symlink("elsewhere", home / "link");
    EXPECT_EQ(createPrivately(home / "link"), home / "elsewhere");
    EXPECT_TRUE(fs::is_regular_file(home / "elsewhere"));
    replacePrivately(home / "link", "text");
    EXPECT_EQ(home.read("elsewhere"), "text");
    EXPECT_TRUE(fs::is_symlink(home / "link"));
    fs::create_directory_symlink("managed/data", home / "data");
    EXPECT_THROW(makePrivateDirectory(home / "data"), std::system_error) << "a disk that is away";
    makePrivateDirectory(home / "managed/data");
    makePrivateDirectory(home / "data/below/..");
    replacePrivately(home / "data/below/note", "text");
    EXPECT_EQ(home.read("managed/data/below/note"), "text");
    fs::create_symlink("loop", home / "loop");
    EXPECT_THROW(openPrivately(home / "loop"), std::system_error);
    ASSERT_EQ(::mkfifo((home / "device").c_str(), 0600), 0);
    fs::create_symlink("device", home / "discarded");
    EXPECT_THROW(replacePrivately(home / "discarded", "text"), std::system_error);
    EXPECT_THROW(replaceUnlessSame(home / "discarded", "text"), std::system_error);
    EXPECT_TRUE(fs::is_fifo(home / "device")) << "what a link was pointed at stays";
}

TEST(PrivateFiles, FollowNoLinkThatAnotherUserPlanted) {
    const testing::TemporaryDirectory home;
    home.write("theirs/own/file", "");
    home.write("ours/file", "");
    fs::permissions(home.path(), fs::perms{0755});
    fs::create_directory_symlink("../ours", home / "theirs/out");
    fs::create_directory_symlink("own", home / "theirs/in");
    fs::create_symlink("victim", home / "planted");
    fs::create_symlink("planted", home / "detour");
    fs::create_directory_symlink("ours", home / "folder");
    for (const char* name :
         {"theirs", "theirs/own", "theirs/out", "theirs/in", "planted", "folder"})
        if (::lchown((home / name).c_str(), 1234, 1234) != 0)
            GTEST_SKIP() << "only the administrator gives links away";
    for (const char* name : {"planted", "detour", "folder/file", "folder/new", "theirs/out/file"}) {
        EXPECT_THROW(createPrivately(home / name), ForeignFileError) << name;
        EXPECT_THROW(openPrivately(home / name), ForeignFileError) << name;
        EXPECT_THROW(replacePrivately(home / name, "text"), ForeignFileError) << name;
    }
    for (const char* name : {"folder", "folder/below", "theirs/out"})
        EXPECT_THROW(makePrivateDirectory(home / name), ForeignFileError) << name;
    EXPECT_FALSE(lockPrivately(home / "folder/new", {}).isOpen());
    EXPECT_FALSE(fs::exists(home / "victim"));
    EXPECT_EQ(std::distance(fs::directory_iterator(home / "ours"), {}), 1);
    EXPECT_EQ(createPrivately(home / "theirs/in/file"), home / "theirs/own/file")
        << "what the administrator finds in a home is as that user has it";
}

TEST(PrivateFiles, AreNotTakenFromAnotherUserWhoLeftThemOpen) {
    const testing::TemporaryDirectory home;
    for (const auto& [name, mode] : {std::pair{"open", 0666}, {"closed", 0600}}) {
        const fs::path file = home.write(name, "");
        if (::chown(file.c_str(), 1234, 1234) != 0) GTEST_SKIP() << "only the administrator";
        fs::permissions(file, fs::perms(mode));
    }
    EXPECT_THROW(createPrivately(home / "open"), ForeignFileError);
    EXPECT_THROW(openPrivately(home / "open"), ForeignFileError);
    EXPECT_TRUE(openPrivately(home / "closed").isOpen()) << "as on a network with other numbers";
}

TEST(PrivateFiles, AreTheUsersWhoseDirectoryItIsWhenTheAdministratorMakesThem) {
    const testing::TemporaryDirectory home;
    if (::chown(home.path().c_str(), 1234, 1234) != 0) GTEST_SKIP() << "only the administrator";
    makePrivateDirectory(home / "top/data");
    createPrivately(home / "top/data/store");
    replacePrivately(home / "top/data/note", "text");
    fs::create_directory(home / "roots");
    createPrivately(home / "roots/own");
    for (const auto& [name, owner] : {std::pair{"top", 1234U},
                                      {"top/data", 1234U},
                                      {"top/data/store", 1234U},
                                      {"top/data/note", 1234U},
                                      {"roots/own", 0U}}) {
        struct stat status = {};
        EXPECT_EQ(::stat((home / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, owner) << name;
    }
}

TEST(PrivateFiles, AreWrittenAgainWhereTheyAreNotAsWanted) {
    const testing::TemporaryDirectory home;
    for (const char* present : {"", "text", "other", "texts"}) {
        home.write("note", present);
        fs::create_hard_link(home / "note", home / "before");
        replaceUnlessSame(home / "note", "text");
        EXPECT_EQ(home.read("note"), "text");
        EXPECT_EQ(fs::equivalent(home / "note", home / "before"),
                  std::string_view(present) == "text");
        EXPECT_EQ(home.read("before"), present) << "a reader met half of it";
        fs::remove(home / "before");
        fs::remove(home / "note");
    }
}

TEST(PrivateFiles, RemoveWhatAKilledWriterLeftButNotWhatOneIsWriting) {
    const testing::TemporaryDirectory home;
    home.write(".tokwatch-replacing-Ab1z9Z", "killed");
    for (const char* name : {"note.backup", "note.sqlite", ".tokwatch-backup", "note.Ab1z9Z"})
        home.write(name, "the user's");
    const fs::path busy = home.write(".tokwatch-replacing-xxxxxx", "being written");
    const FileDescriptor writer = openPrivately(busy);
    ASSERT_EQ(::flock(writer.get(), LOCK_EX), 0);
    replacePrivately(home / "note", "text");
    EXPECT_FALSE(fs::exists(home / ".tokwatch-replacing-Ab1z9Z"));
    EXPECT_TRUE(fs::exists(busy));
    for (const char* name : {"note.backup", "note.sqlite", ".tokwatch-backup", "note.Ab1z9Z"})
        EXPECT_TRUE(fs::exists(home / name)) << name;
}

} // namespace
} // namespace tokwatch

#include "KivoLaunch/DetachedStart.h"
#include "KivoLaunch/LoginItem.h"

#include "Tests/Support/TemporaryDirectory.h"

#include <QProcess>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace kivo {
namespace {

namespace fs = std::filesystem;

struct LoginItemTest : ::testing::Test {
    LoginItem itemOf(const QStringList& command) const {
        return {directory, {"app.example", "Example", "Shows", command, "app.example"}};
    }
    tokwatch::testing::TemporaryDirectory home;
    fs::path directory = home / "config/autostart";
    LoginItem item = itemOf({"/usr/bin/example"});
};

TEST_F(LoginItemTest, WritesAndRemovesTheEntry) {
    EXPECT_TRUE(item.setEnabled(false)); // nothing to remove
    const mode_t before = ::umask(0);
    EXPECT_TRUE(item.setEnabled(true));
    ::umask(before);
    EXPECT_EQ(fs::status(item.file()).permissions(), fs::perms{0600});
    EXPECT_EQ(fs::status(directory).permissions(), fs::perms{0700});
    EXPECT_TRUE(item.isEnabled());
    EXPECT_EQ(home.read("config/autostart/app.example.desktop"),
              "[Desktop Entry]\nType=Application\nName=Example\nComment=Shows\n"
              "Exec=/usr/bin/example\nTryExec=/usr/bin/example\nIcon=app.example\n"
              "Terminal=false\nStartupNotify=false\n");
    const fs::path other = directory / "other";
    fs::create_hard_link(item.file(), other);
    EXPECT_TRUE(item.setEnabled(true));
    EXPECT_FALSE(fs::equivalent(item.file(), other)) << "written in place";
    EXPECT_EQ(std::distance(fs::directory_iterator(directory), {}), 2) << "left something behind";
    EXPECT_TRUE(item.setEnabled(false));
    EXPECT_FALSE(item.isEnabled());
    EXPECT_FALSE(fs::exists(item.file()));
    ASSERT_EQ(::mkfifo(item.file().c_str(), 0600), 0);
    EXPECT_FALSE(item.isEnabled()) << "and is not waited for";
    EXPECT_FALSE(item.setEnabled(true));

    fs::remove_all(directory);
    home.write("config/autostart", "a file where the directory would be");
    EXPECT_FALSE(item.setEnabled(true));
    EXPECT_FALSE(item.isEnabled());
}

TEST_F(LoginItemTest, LeavesAloneWhatAnotherUsersLinkLeadsTo) {
    ASSERT_TRUE(item.setEnabled(true));
    const fs::path real = home / "real";
    fs::rename(directory, real);
    fs::create_directory_symlink(real, directory);
    EXPECT_TRUE(item.isEnabled());
    if (::lchown(directory.c_str(), 1234, 1234) != 0) GTEST_SKIP() << "only the administrator";
    EXPECT_FALSE(item.isEnabled());
    EXPECT_FALSE(item.setEnabled(false));
    EXPECT_FALSE(item.setEnabled(true));
    EXPECT_TRUE(fs::exists(real / "app.example.desktop"));
    ASSERT_EQ(::lchown(directory.c_str(), 0, 0), 0);
    fs::rename(real / "app.example.desktop", home / "linked");
    fs::create_symlink(home / "linked", item.file());
    EXPECT_TRUE(item.setEnabled(false));
    EXPECT_FALSE(fs::is_symlink(item.file()));
    EXPECT_TRUE(fs::exists(home / "linked")) << "is the user's, who linked it";
}

TEST_F(LoginItemTest, KnowsEntriesThatDesktopsSwitchedOff) {
    for (const auto& [line, isEnabled] : {std::pair{"", true},
                                          {"Hidden=true\n", false},
                                          {"Hidden = true \n", false},
                                          {"Hidden=false\n", true},
                                          {"X-GNOME-Autostart-enabled=false\n", false},
                                          {"X-GNOME-Autostart-enabled=true\n", true},
                                          {"[Desktop Action y]\nHidden=true\n", true}}) {
        home.write("config/autostart/app.example.desktop",
                   std::string("[Desktop Entry]\nExec=x\n") + line);
        EXPECT_EQ(item.isEnabled(), isEnabled) << line;
        // Switching it on replaces what is there.
        EXPECT_TRUE(item.setEnabled(true));
        EXPECT_TRUE(item.isEnabled()) << line;
    }
}

TEST_F(LoginItemTest, QuotesWhatItMust) {
    struct Case {
        QStringList command;
        const char* text;
    };
    for (const Case& c : {Case{{"/opt/a b/tokwatch", "--quiet"}, R"("/opt/a b/tokwatch" --quiet)"},
                          {{"/x", ""}, R"(/x "")"},
                          {{"/x", "a\"b"}, R"(/x "a\"b")"},
                          {{"/x", "$HOME`id`"}, R"(/x "\$HOME\`id\`")"},
                          {{"/x", R"(back\slash)"}, R"(/x "back\\slash")"},
                          {{"/x", "50%"}, R"(/x "50%%")"},
                          {{"/x", "a;b&c|d>e#f'g*h?(i)~"}, R"(/x "a;b&c|d>e#f'g*h?(i)~")"}})
        EXPECT_EQ(desktopEntryCommand(c.command).toStdString(), c.text);
    // In the file backslashes are escaped once more.
    ASSERT_TRUE(itemOf({R"(/opt/a"b\c/run)"}).setEnabled(true));
    const std::string entry = home.read("config/autostart/app.example.desktop");
    EXPECT_NE(entry.find(R"(Exec="/opt/a\\"b\\\\c/run")"), std::string::npos) << entry;
    EXPECT_NE(entry.find(R"(TryExec=/opt/a"b\\c/run)"), std::string::npos) << entry;
}

TEST(DetachedStart, LeavesTheProgramNothingOfWhatThisOneReadsAndPrints) {
    const tokwatch::testing::TemporaryDirectory home;
    ASSERT_EQ(::mkfifo((home / "said").c_str(), 0600), 0);
    const char* script =
        R"(x=$(readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/2); echo "$x" >"$0")";
    ASSERT_TRUE(startDetached("/bin/sh", {"-c", script, (home / "said").c_str()}));
    EXPECT_EQ(home.read("said"), "/dev/null\n/dev/null\n/dev/null\n");
}

#ifdef DESKTOP_FILE_VALIDATE
TEST_F(LoginItemTest, IsValidForOthers) {
    ASSERT_TRUE(itemOf({R"(/opt/a b$c/run 100%)", "--at", "x y"}).setEnabled(true));
    QProcess validator;
    validator.start(DESKTOP_FILE_VALIDATE, {QString::fromStdString(item.file().string())});
    ASSERT_TRUE(validator.waitForFinished());
    EXPECT_EQ(validator.exitCode(), 0) << validator.readAll().toStdString();
}
#endif

} // namespace
} // namespace kivo

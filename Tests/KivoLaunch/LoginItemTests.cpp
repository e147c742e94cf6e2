#include "KivoLaunch/LoginItem.h"

#include "Tests/Support/TemporaryDirectory.h"

#include <QProcess>

#include <gmock/gmock.h>

#include <filesystem>

namespace kivo {
namespace {

using ::testing::HasSubstr;
using tokwatch::testing::TemporaryDirectory;
namespace fs = std::filesystem;

LoginItem::Program program(const QStringList& command = {"/usr/bin/example"}) {
    return {"app.example", "Example", "Shows an example", command, "app.example"};
}

class LoginItemTest : public ::testing::Test {
  protected:
    TemporaryDirectory home;
    fs::path directory = home / "config/autostart";
    LoginItem item{directory, program()};
};

TEST_F(LoginItemTest, WritesAndRemovesTheEntry) {
    EXPECT_FALSE(item.isEnabled());
    EXPECT_TRUE(item.setEnabled(false)); // nothing to remove
    EXPECT_TRUE(item.setEnabled(true));
    EXPECT_TRUE(item.isEnabled());
    EXPECT_EQ(home.read("config/autostart/app.example.desktop"), "[Desktop Entry]\n"
                                                                 "Type=Application\n"
                                                                 "Name=Example\n"
                                                                 "Comment=Shows an example\n"
                                                                 "Exec=/usr/bin/example\n"
                                                                 "TryExec=/usr/bin/example\n"
                                                                 "Icon=app.example\n"
                                                                 "Terminal=false\n"
                                                                 "StartupNotify=false\n");
    EXPECT_TRUE(item.setEnabled(false));
    EXPECT_FALSE(item.isEnabled());
    EXPECT_FALSE(fs::exists(item.file()));
}

TEST_F(LoginItemTest, KnowsEntriesThatDesktopsSwitchedOff) {
    struct Case {
        const char* contents;
        bool isEnabled;
    };
    const Case cases[]{
        {"[Desktop Entry]\nExec=x\n", true},
        {"[Desktop Entry]\nExec=x\nHidden=true\n", false},
        {"[Desktop Entry]\nExec=x\nHidden = true \n", false},
        {"[Desktop Entry]\nExec=x\nHidden=false\n", true},
        {"[Desktop Entry]\nExec=x\nX-GNOME-Autostart-enabled=false\n", false},
        {"[Desktop Entry]\nExec=x\nX-GNOME-Autostart-enabled=true\n", true},
        {"[Desktop Entry]\nExec=x\n[Desktop Action y]\nHidden=true\n", true},
    };
    for (const Case& each : cases) {
        home.write("config/autostart/app.example.desktop", each.contents);
        EXPECT_EQ(item.isEnabled(), each.isEnabled) << each.contents;
        // Switching it on replaces what is there.
        EXPECT_TRUE(item.setEnabled(true));
        EXPECT_TRUE(item.isEnabled()) << each.contents;
    }
}

TEST_F(LoginItemTest, SaysThatItFailed) {
    home.write("config/autostart", "a file where the directory would be");
    EXPECT_FALSE(item.setEnabled(true));
    EXPECT_FALSE(item.isEnabled());
    EXPECT_EQ(home.read("config/autostart"), "a file where the directory would be");
}

TEST_F(LoginItemTest, ReplacesTheFileAsAWhole) {
    ASSERT_TRUE(item.setEnabled(true));
    const fs::path other = directory / "other";
    fs::create_hard_link(item.file(), other);
    ASSERT_TRUE(item.setEnabled(true));
    EXPECT_FALSE(fs::equivalent(item.file(), other)) << "written in place";
    EXPECT_EQ(std::distance(fs::directory_iterator(directory), {}), 2) << "left something behind";
}

TEST(DesktopEntryCommand, QuotesWhatItMust) {
    struct Case {
        QStringList command;
        const char* text;
    };
    const Case cases[]{
        {{"/usr/bin/tokwatch"}, "/usr/bin/tokwatch"},
        {{"/opt/a b/tokwatch", "--quiet"}, R"("/opt/a b/tokwatch" --quiet)"},
        {{"/x", ""}, R"(/x "")"},
        {{"/x", "a\"b"}, R"(/x "a\"b")"},
        {{"/x", "$HOME`id`"}, R"(/x "\$HOME\`id\`")"},
        {{"/x", R"(back\slash)"}, R"(/x "back\\slash")"},
        {{"/x", "50%"}, R"(/x "50%%")"},
        {{"/x", "häuser"}, "/x \"häuser\""},
        {{"/x", "a;b&c|d>e#f'g*h?(i)~"}, R"(/x "a;b&c|d>e#f'g*h?(i)~")"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(desktopEntryCommand(each.command).toStdString(), each.text);
}

TEST(DesktopEntryCommand, HasItsBackslashesEscapedOnceMoreInTheFile) {
    const TemporaryDirectory home;
    LoginItem item(home.path(), program({R"(/opt/a"b\c/run)"}));
    ASSERT_TRUE(item.setEnabled(true));
    EXPECT_THAT(home.read("app.example.desktop"), HasSubstr(R"(Exec="/opt/a\\"b\\\\c/run")"));
    EXPECT_THAT(home.read("app.example.desktop"), HasSubstr(R"(TryExec=/opt/a"b\\c/run)"));
}

#ifdef DESKTOP_FILE_VALIDATE
TEST(LoginItem, IsValidForOthers) {
    const TemporaryDirectory home;
    LoginItem item(home.path(), program({R"(/opt/a b$c/run 100%)", "--at", "x y"}));
    ASSERT_TRUE(item.setEnabled(true));
    QProcess validator;
    validator.start(DESKTOP_FILE_VALIDATE, {QString::fromStdString(item.file().string())});
    ASSERT_TRUE(validator.waitForFinished());
    EXPECT_EQ(validator.exitCode(), 0) << validator.readAll().toStdString();
}
#endif

} // namespace
} // namespace kivo

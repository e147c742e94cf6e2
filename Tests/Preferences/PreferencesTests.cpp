#include "Tokwatch/Preferences/Preferences.h"

#include "Tests/Support/CapturedLog.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tests/Support/Testing.h"
#include "Tokwatch/Preferences/AlertPreferences.h"

#include <QFileSystemWatcher>

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <random>
#include <string>

namespace tokwatch::testing {

using enum ProviderID;

/// A settings file with a process of its own that reads it.
struct Process {
    explicit Process(const std::filesystem::path& file) : preferences(settingsFile(file)) {}
    std::string get(std::string_view name) const { return preferences.named(name)->text(); }
    std::optional<std::string> set(std::string_view name, std::string_view text) {
        return preferences.named(name)->assignText(text);
    }
    Preferences preferences;
};

class PreferencesTest : public Test {
    TemporaryDirectory home;

  protected:
    const std::filesystem::path file = home / "Tokwatch/Tokwatch.conf";

    PreferencesTest() { needEventLoop(); }

    Process reading(const std::string& contents) {
        home.write("Tokwatch/Tokwatch.conf", contents);
        return Process(file);
    }
    std::string contents() const { return home.read("Tokwatch/Tokwatch.conf"); }
};

/// Every setting, as text: what it is at first, what it is set to and reads as then, what makes no
/// sense in the file and reads as this.
struct Setting {
    std::string_view name, initial, text, expected, nonsense, fallback = initial;
};
constexpr Setting settings[]{{"showDockIcon", "false", "yes", "true", "7"},
                             {"hasCompletedOnboarding", "false", "TRUE", "true", "a, b"},
                             {"menuBarStyle", "provider", "icon", "icon", "Icon"},
                             {"pinnedProvider", "claude", " grok ", "grok", "copilot"},
                             {"showResetTime", "true", "0", "false", "maybe"},
                             {"menuBarWindows", "", "codex=weekly, claude=weekly.opus-4",
                              "claude=weekly.opus-4,codex=weekly", "session"},
                             {"warningThreshold", "0.25", "0.3", "0.3", "high"},
                             {"criticalThreshold", "0.1", "0.25", "0.25", ""},
                             {"tintEnabled", "true", "no", "false", "a, b"},
                             {"providerOrder", "claude,codex,grok,cursor", "grok, codex",
                              "grok,codex,claude,cursor", "grok, copilot, grok, codex",
                              "grok,codex,claude,cursor"},
                             {"disabledProviders", "", "grok", "grok", "copilot, cursor", "cursor"},
                             {"claudeLiveLimits", "true", "false", "false", "off", "false"},
                             {"summaryUnit", "cost", "tokens", "tokens", "Tokens"},
                             {"popoverTab", "usage", "stats", "stats", "@Invalid()"}};

TEST_F(PreferencesTest, FindsEverySettingAgainAfterARestart) {
    const Date pruned = dateFromUnixSeconds(1'773'147'600.5);
    const CapturedLog log;
    {
        Process before(file);
        ASSERT_EQ(before.preferences.all().size(), std::size(settings));
        for (const Setting& each : settings) {
            EXPECT_EQ(before.get(each.name), each.initial) << each.name;
            EXPECT_EQ(before.set(each.name, each.text), std::nullopt) << each.name;
        }
        before.preferences.setLastPruneAt(pruned);
    }
    EXPECT_THAT(contents(), HasSubstr("disabledProviders=grok\n"));
    EXPECT_THAT(contents(), HasSubstr("[menuBarWindows]\nclaude=weekly.opus-4\n"));
    Process after(file);
    for (const Setting& each : settings)
        EXPECT_EQ(after.get(each.name), each.expected) << each.name;
    EXPECT_EQ(after.preferences.lastPruneAt(), pruned);
    for (const char* name : {"disabledProviders", "menuBarWindows"}) {
        EXPECT_EQ(after.set(name, ""), std::nullopt);
        EXPECT_TRUE(after.preferences.save());
        EXPECT_EQ(Process(file).get(name), "");
    }
    EXPECT_EQ(after.preferences.named("ShowDockIcon"), nullptr);
    EXPECT_THAT(log.lines(), IsEmpty());
}

/// Files that are read as the toolkit reads them. Each is a file of its own: the toolkit takes one
/// for unchanged that is replaced by another of its size within a tick of the clock.
class StoredSettings : public Test {
    TemporaryDirectory home;
    const CapturedLog log;
    int files = 0;

  protected:
    StoredSettings() { needEventLoop(); }

    void expectTheSame(const std::string& text) {
        const std::filesystem::path file = home.write(std::to_string(++files), text);
        const Process toolkit(file);
        EXPECT_EQ(PlainSettings::read(file), toolkit.preferences.plain()) << PrintToString(text);
    }
};

TEST_F(StoredSettings, AreTheSameWithoutTheToolkit) {
    std::string choices = "[General]\n";
    std::string nonsense = choices;
    for (const Setting& each : settings) {
        choices += std::string(each.name) + '=' + std::string(each.text) + '\n';
        nonsense += std::string(each.name) + '=' + std::string(each.nonsense) + '\n';
    }
    for (const std::string& text :
         {std::string(), choices, nonsense, std::string("warningThreshold=0.3"),
          std::string("[general]\r\n warningThreshold = +0.5 \r\n"),
          std::string("[General]\nwarningThreshold=\"0.3\"\nsummaryUnit=\"tokens\"\n"),
          std::string("[General]\nwarningThreshold=0.01\ncriticalThreshold=0.9\n"),
          std::string("[General]\nwarningThreshold=nan\ncriticalThreshold=\n"),
          std::string("[General]\nWarningThreshold=0.9\n;warningThreshold=0.8\n"),
          std::string("[menuBarWindows]\nwarningThreshold=0.9\n[General]\nwarningThreshold=0.8\n"),
          std::string("[General]\nwarningThreshold=0.4\nwarningThreshold=0.6\n"),
          std::string("[claudeLiveLimits/deeper]\nkey=1\n"),
          std::string(
              "[General]\nproviderOrder=grok, \"codex\" ,grok\ndisabledProviders=@Invalid()"),
          std::string("[General]\nproviderOrder=\"grok, codex\"\nclaudeLiveLimits=true, false\n"),
          std::string(
              "[General]\nmenuBarWindows\\codex=w\nclaudeLiveLimits=\"YES\"\npinnedProvider=\n"),
          std::string("[menuBarWindows]\nclaude=\"a, \\\"b\\\" \"\ncodex = week ly \ngrok=a, b\n"),
          std::string("no settings at all")}) {
        expectTheSame(text);
    }
}

TEST_F(PreferencesTest, TellWhyAChangeIsNotKeptAndKeepItOnceTheyCan) {
    CapturedLog log;
    Process process(file);
    const std::filesystem::path directory = file.parent_path();
    std::filesystem::remove_all(directory);
    std::ofstream(directory) << "in its way";
    process.preferences.showResetTime = false;
    EXPECT_TRUE(until([&] { return !process.preferences.unsaved().value().empty(); }));
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr(file.string() + ": Not a directory")));
    std::filesystem::remove(directory);
    std::filesystem::create_directory(directory);
    EXPECT_TRUE(process.preferences.save());
    EXPECT_THAT(contents(), HasSubstr("showResetTime=false"));
}

/// Files of pieces that mean something in them, put together at random.
TEST_F(StoredSettings, AreTheSameHoweverTheFileIsWritten) {
    const QList<QByteArray> pieces =
        QByteArray("[General]|[menuBarWindows]|[other]|\n|\n|\n|\r\n| |=|=|;|\"|\\x61|\\146|\\\\|"
                   ",|\t|%41|claudeLiveLimits=|showResetTime=|providerOrder=|"
                   "disabledProviders=@Invalid()\n|warningThreshold=|pinnedProvider=|claude=|"
                   "menuBarWindows\\codex=|true|false|yes|codex|grok|0.5|0.3|@@x|session")
            .split('|');
    std::mt19937 random(1);
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (std::size_t left = random() % 24; left > 0; --left)
            text += pieces[random() % pieces.size()].toStdString();
        expectTheSame(text);
    }
}

TEST_F(PreferencesTest, FallsBackWhereTheFileMakesNoSense) {
    std::string text = "[General]\nlastPruneAt=yesterday\nnoSuchKey=7\n";
    for (const Setting& each : settings)
        text += std::string(each.name) + '=' + std::string(each.nonsense) + '\n';
    const CapturedLog log;
    Process odd = reading(text);
    odd.preferences.reload(); // tells nothing twice
    for (const Setting& each : settings) {
        EXPECT_EQ(odd.get(each.name), each.fallback) << each.name;
        EXPECT_THAT(
            log.lines(),
            Contains(AllOf(HasSubstr(": " + std::string(each.name) + " in " + file.string()),
                           EndsWith(" as \"" + std::string(each.fallback) + '"'))));
    }
    EXPECT_THAT(log.lines(), Contains(EndsWith(" is \"yesterday\", not seconds since 1970; it "
                                               "counts as missing")));
    EXPECT_THAT(log.lines(), Contains(EndsWith(" is \"7\", but no setting has that name; nobody "
                                               "reads it")));
    EXPECT_EQ(log.lines().size(), std::size(settings) + 2);
    EXPECT_FALSE(odd.preferences.lastPruneAt());
}

TEST_F(PreferencesTest, SaysWhatAValueMayBe) {
    Process process(file);
    EXPECT_EQ(process.set("warningThreshold", "x"),
              "warningThreshold is a number from 0.1 to 1, not \"x\"");
    EXPECT_EQ(process.set("menuBarStyle", "Icon"),
              "menuBarStyle is icon or provider, not \"Icon\"");
    const std::vector<std::pair<std::string_view, std::vector<std::string_view>>> refused{
        {"showDockIcon", {""}},
        {"warningThreshold", {"0.05", "1.01", "nan", "0.5x"}},
        {"criticalThreshold", {"0.21", "0.04"}},
        {"providerOrder", {"claude,claude", "claude,"}},
        {"disabledProviders", {"copilot"}},
        {"menuBarWindows", {"claude", "claude=", "copilot=x", "claude=a,claude=b"}}};
    for (const auto& [name, texts] : refused) {
        const std::string before = process.get(name);
        for (const std::string_view text : texts)
            EXPECT_NE(process.set(name, text), std::nullopt) << name << ' ' << text;
        EXPECT_EQ(process.get(name), before);
    }
    EXPECT_EQ(process.set("criticalThreshold", "0.2"), std::nullopt); // the highest below 0.25
    EXPECT_EQ(process.set("warningThreshold", "0.15"), std::nullopt);
    EXPECT_EQ(process.get("criticalThreshold"), "0.1");
}

TEST_F(PreferencesTest, NamesLinesThatAreNoSettingsAndSavesTheOthers) {
    const CapturedLog log;
    Process broken = reading(
        std::string("[General]\nwarningThreshold=0.3\n\0\xff[[[=\nno setting\n; note\n[x", 57));
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("line 4 of "), HasSubstr("line 6 of "),
                                         HasSubstr(": ??[[[ in ")));
    broken.preferences.tintEnabled = false;
    EXPECT_TRUE(broken.preferences.save());
    Process again(file);
    EXPECT_FALSE(again.preferences.tintEnabled);
    EXPECT_EQ(again.preferences.warningThreshold, 0.3);
    EXPECT_EQ(log.lines().size(), 4U) << "the key is there still";
    std::string groups = "[General]\nno setting\n";
    for (int group = 0; group < 30; ++group)
        groups += "[group" + std::to_string(group) + "/deeper]\nx=1\n";
    EXPECT_THAT(again.preferences.faultsOf(reading(groups).preferences.file()),
                AllOf(SizeIs(21), Contains(HasSubstr("line 2 of ")),
                      Contains("and 11 more in " + file.string())));
}

TEST_F(PreferencesTest, NeitherWaitsForNorReplacesWhatIsNoOrdinaryFile) {
    const CapturedLog log;
    Process process = reading("[General]\nwarningThreshold=0.3\n");
    std::filesystem::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    process.preferences.reload();
    process.preferences.tintEnabled = false;
    EXPECT_FALSE(process.preferences.save());
    EXPECT_EQ(process.preferences.warningThreshold, 0.3) << "what was read last";
    Process fresh(file);
    EXPECT_EQ(fresh.preferences.warningThreshold, 0.25) << "the defaults hold";
    EXPECT_TRUE(process.preferences.areKnown());
    EXPECT_FALSE(fresh.preferences.areKnown());
    EXPECT_THAT(log.lines().back(), HasSubstr("is not a regular file"));
    std::filesystem::remove(file);
    fresh.preferences.reload();
    fresh.preferences.showDockIcon = true;
    EXPECT_FALSE(fresh.preferences.save()) << "what was there is not known";
    std::optional<ProviderID> pinned; // at the end of the welcome
    const QPropertyNotifier end = fresh.preferences.hasCompletedOnboarding.addNotifier(
        [&] { pinned = fresh.preferences.pinnedProvider.peek(); });
    reading("[General]\nhasCompletedOnboarding=true\npinnedProvider=grok\n");
    fresh.preferences.reload();
    EXPECT_TRUE(fresh.preferences.areKnown());
    EXPECT_EQ(pinned, grok) << "nobody sees half of a file";
    EXPECT_TRUE(fresh.preferences.save());
    EXPECT_THAT(contents(),
                AllOf(HasSubstr("pinnedProvider=grok"), HasSubstr("showDockIcon=true")));
}

TEST_F(PreferencesTest, LeaveAnotherUsersFileThatUsersAndGoThroughNoLinkOutOfTheLoop) {
    const CapturedLog log;
    const std::filesystem::path directory = file.parent_path();
    std::filesystem::create_directory(directory);
    for (const std::filesystem::path& theirs : {directory.parent_path(), directory})
        if (::chown(theirs.c_str(), 1234, 1234) != 0) GTEST_SKIP() << "only the administrator";
    const TemporaryDirectory ours;
    const std::filesystem::path victim = ours.write("victim", "[General]\nshowDockIcon=false\n");
    Process process(file);
    process.preferences.showDockIcon = true;
    EXPECT_TRUE(until([&] { return !contents().empty(); }));
    struct stat status = {};
    EXPECT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 1234U);

    std::filesystem::remove(file);
    std::filesystem::create_symlink(victim, file);
    EXPECT_EQ(::lchown(file.c_str(), 1234, 1234), 0);
    process.preferences.reload();
    process.preferences.tintEnabled = false;
    EXPECT_TRUE(until([&] { return !process.preferences.unsaved().value().empty(); }));
    EXPECT_TRUE(process.preferences.showDockIcon);
    EXPECT_EQ(ours.read("victim"), "[General]\nshowDockIcon=false\n");
    std::filesystem::remove(file);
    EXPECT_TRUE(process.preferences.save());
    EXPECT_THAT(contents(), HasSubstr("tintEnabled=false")) << "what was chosen meanwhile";
}

TEST_F(PreferencesTest, KeepsCriticalBelowWarningWhenReading) {
    for (const auto& [read, expected] : {std::pair{std::pair{"0.05", "0.1"}, std::pair{0.1, 0.05}},
                                         {{"0.15", "0.3"}, {0.15, 0.1}},
                                         {{"0.25", "0.2"}, {0.25, 0.2}},
                                         {{"0.25", "0.24"}, {0.25, 0.2}},
                                         {{"0.25", "0.01"}, {0.25, 0.05}},
                                         {{"nan", "nan"}, {0.25, 0.1}},
                                         {{"inf", "-inf"}, {0.25, 0.1}}}) {
        const TemporaryDirectory another; // as a process's QSettings share what they know of a file
        Process process(another.write("settings.conf",
                                      std::string("[General]\nwarningThreshold=") + read.first +
                                          "\ncriticalThreshold=" + read.second + '\n'));
        EXPECT_EQ(process.preferences.warningThreshold, expected.first) << read.first;
        EXPECT_EQ(process.preferences.criticalThreshold, expected.second) << read.second;
    }
}

TEST_F(PreferencesTest, KeepsCriticalBelowWarningWhenAssigning) {
    Process process(file);
    Preferences& preferences = process.preferences;
    preferences.criticalThreshold = 0.9;
    EXPECT_DOUBLE_EQ(preferences.criticalThreshold, 0.2);
    EXPECT_TRUE(preferences.save());
    EXPECT_THAT(contents(), HasSubstr("criticalThreshold=0.2\n"));
    preferences.warningThreshold = 0.01;
    EXPECT_DOUBLE_EQ(preferences.warningThreshold, 0.1);
    EXPECT_DOUBLE_EQ(preferences.criticalThreshold, 0.05);
    preferences.warningThreshold = 0.5; // as after a restart with the same file
    EXPECT_DOUBLE_EQ(preferences.criticalThreshold, 0.2);
}

TEST_F(PreferencesTest, FollowsWhatAnotherProcessWrites) {
    Process application(file);
    application.preferences.followFile();
    int untouched = 0;
    const auto notifier = application.preferences.tintEnabled.addNotifier([&] { ++untouched; });
    // QSettings of one process share what they know of a file, so the others write it themselves,
    // the way QSettings of another process does: replacing it.
    const auto replace = [this](std::string_view contents) {
        const std::filesystem::path other = file.parent_path() / "Tokwatch.conf.XyZabc";
        std::ofstream(other) << contents;
        std::filesystem::rename(other, file);
    };
    const auto& unit = application.preferences.summaryUnit;
    const auto& windows = application.preferences.menuBarWindows;
    replace("[General]\nsummaryUnit=tokens\n\n[menuBarWindows]\ncodex=weekly\n");
    EXPECT_TRUE(until([&] { return unit == SummaryUnit::tokens; }));
    EXPECT_THAT(windows.value(), ElementsAre(Pair("codex", "weekly")));
    replace("[General]\nsummaryUnit=cost\n");
    EXPECT_TRUE(until([&] { return unit == SummaryUnit::cost; }));
    EXPECT_THAT(windows.value(), IsEmpty());
    std::ofstream(file) << "[General]\nsummaryUnit=tokens\npinnedProvider=grok\n"; // in place
    EXPECT_TRUE(until([&] { return application.preferences.pinnedProvider == grok; }));
    // Moved to a place for such files, it stays what it was, and nothing takes its place meanwhile.
    const std::filesystem::path moved = file.parent_path() / "dotfile";
    QFileSystemWatcher watcher({QString::fromStdString(file.parent_path().string())});
    bool isSeen = false;
    QObject::connect(&watcher, &QFileSystemWatcher::directoryChanged, [&] { isSeen = true; });
    std::filesystem::rename(file, moved);
    EXPECT_TRUE(until([&] { return isSeen; }));
    EXPECT_NO_THROW(std::filesystem::create_symlink(moved, file));
    EXPECT_EQ(application.preferences.pinnedProvider, grok);
    std::filesystem::remove(file);
    replace("[General]\nsummaryUnit=tokens\n");
    EXPECT_TRUE(until([&] { return application.preferences.pinnedProvider == claude; }));
    EXPECT_EQ(untouched, 0);

    // Emptied, it is what it was as soon as anything is written.
    replace("[General]\nclaudeLiveLimits=false\n\n[menuBarWindows]\ncodex=weekly\n");
    EXPECT_TRUE(until([&] { return !application.preferences.claudeLiveLimits; }));
    std::ofstream(file) << "[General]\n";
    application.preferences.reload();
    EXPECT_FALSE(application.preferences.claudeLiveLimits);
    application.preferences.setLastPruneAt(dateFromUnixSeconds(1773100800));
    EXPECT_TRUE(application.preferences.save());
    EXPECT_THAT(contents(), AllOf(HasSubstr("claudeLiveLimits=false"), HasSubstr("codex=weekly")));
    std::ofstream(file) << "[General]\n";
    application.preferences.reload();
    application.preferences.claudeLiveLimits = true;
    EXPECT_TRUE(application.preferences.save());
    EXPECT_THAT(contents(), AllOf(HasSubstr("claudeLiveLimits=true"), HasSubstr("codex=weekly")));

    // What both change at the same time, both keep.
    replace("[General]\nsummaryUnit=tokens\n");
    application.preferences.showDockIcon = true;
    EXPECT_TRUE(until([&] { return unit == SummaryUnit::tokens; }));
    EXPECT_TRUE(application.preferences.save());
    EXPECT_THAT(contents(), HasSubstr("showDockIcon=true"));
    EXPECT_THAT(contents(), HasSubstr("summaryUnit=tokens"));
}

TEST_F(PreferencesTest, TellsOfWhatIsGraveAndNothingInQuietHours) {
    const std::filesystem::path place = file.parent_path() / "Notifications.conf";
    {
        AlertPreferences alerts(settingsFile(place));
        EXPECT_THAT(alerts.wanted(), ElementsAre(AlertKind::usedUp, AlertKind::critical));
        EXPECT_FALSE(alerts.isQuietAt({23 * 60}));
        alerts.of(AlertKind::reset) = true;
        alerts.quietHours = true;
        for (const char* nonsense : {"24:00", "7:60", "7:5", "-1:00", "7", "7:0x", ""})
            EXPECT_NE(alerts.quietUntil.assignText(nonsense), std::nullopt) << nonsense;
        EXPECT_EQ(alerts.quietUntil.assignText("7:05"), std::nullopt);
    }
    AlertPreferences alerts(settingsFile(place));
    EXPECT_TRUE(alerts.reset);
    EXPECT_EQ(alerts.quietUntil.text(), "7:05");
    for (const auto& [from, until, hours] : {std::tuple{"22:00", "7:05", "0 1 2 3 4 5 6 7 22 23 "},
                                             {"9:30", "12:00", "10 11 "},
                                             {"9:00", "9:00", ""}}) {
        alerts.quietFrom.assignText(from);
        alerts.quietUntil.assignText(until);
        std::string quiet;
        for (int hour = 0; hour < 24; ++hour)
            if (alerts.isQuietAt({60 * hour})) quiet += std::to_string(hour) + ' ';
        EXPECT_EQ(quiet, hours) << from;
    }
}

} // namespace tokwatch::testing

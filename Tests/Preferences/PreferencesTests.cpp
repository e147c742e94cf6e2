#include "Tokwatch/Preferences/Preferences.h"

#include "Tests/Support/CapturedLog.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/TemporaryDirectory.h"

#include <QEventLoop>
#include <QSettings>
#include <QTimer>

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <fstream>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Pair;
using testing::TemporaryDirectory;
using enum ProviderID;

/// A settings file with a process of its own that reads it.
struct Process {
    explicit Process(const std::filesystem::path& file)
        : settings(settingsFile(file)), preferences(*settings) {}
    std::unique_ptr<QSettings> settings;
    Preferences preferences;
};

class PreferencesTest : public ::testing::Test {
    TemporaryDirectory home;

  protected:
    const std::filesystem::path file = home / "Tokwatch/Tokwatch.conf";

    PreferencesTest() { testing::needEventLoop(); }

    Process reading(const std::string& contents) {
        home.write("Tokwatch/Tokwatch.conf", contents);
        return Process(file);
    }
    std::string contents() const { return home.read("Tokwatch/Tokwatch.conf"); }

    /// Runs the event loop until the condition holds, or a minute as a bound for a broken test.
    template<typename Condition>
    static bool comesTrue(Condition condition) {
        QTimer bound;
        bound.setSingleShot(true);
        bound.start(60'000);
        while (!condition() && bound.isActive())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return condition();
    }
};

TEST_F(PreferencesTest, HasDefaultsWithoutAFile) {
    Process fresh(file);
    const Preferences& preferences = fresh.preferences;
    EXPECT_FALSE(preferences.showDockIcon);
    EXPECT_FALSE(preferences.hasCompletedOnboarding);
    EXPECT_EQ(preferences.menuBarStyle, MenuBarStyle::provider);
    EXPECT_EQ(preferences.pinnedProvider, claude);
    EXPECT_TRUE(preferences.showResetTime);
    EXPECT_THAT(preferences.menuBarWindows.value(), IsEmpty());
    EXPECT_EQ(preferences.warningThreshold, 0.25);
    EXPECT_EQ(preferences.criticalThreshold, 0.1);
    EXPECT_TRUE(preferences.tintEnabled);
    EXPECT_THAT(preferences.enabledProviders(), ElementsAre(claude, codex, grok, cursor));
    EXPECT_TRUE(preferences.claudeLiveLimits);
    EXPECT_EQ(preferences.summaryUnit, SummaryUnit::cost);
    EXPECT_EQ(preferences.popoverTab, PopoverTab::usage);
    EXPECT_FALSE(preferences.lastPruneAt());
}

TEST_F(PreferencesTest, FindsEverythingAgainAfterARestart) {
    const Date pruned = dateFromUnixSeconds(1'773'147'600.5);
    {
        Process before(file);
        Preferences& preferences = before.preferences;
        preferences.showDockIcon = true;
        preferences.hasCompletedOnboarding = true;
        preferences.menuBarStyle = MenuBarStyle::icon;
        preferences.pinnedProvider = grok;
        preferences.showResetTime = false;
        preferences.menuBarWindows = WindowChoices{{"claude", "weekly.opus-4"}, {"codex", "a,b=c"}};
        preferences.warningThreshold = 0.4;
        preferences.criticalThreshold = 0.15;
        preferences.tintEnabled = false;
        preferences.providerOrder = ProviderList{codex};
        preferences.disabledProviders = ProviderSet{cursor};
        preferences.claudeLiveLimits = false;
        preferences.summaryUnit = SummaryUnit::tokens;
        preferences.popoverTab = PopoverTab::models;
        preferences.setLastPruneAt(pruned);
    }
    EXPECT_THAT(contents(), HasSubstr("disabledProviders=cursor\n"));
    EXPECT_THAT(contents(), HasSubstr("[menuBarWindows]\nclaude=weekly.opus-4\n"));
    Process after(file);
    Preferences& preferences = after.preferences;
    EXPECT_TRUE(preferences.showDockIcon);
    EXPECT_TRUE(preferences.hasCompletedOnboarding);
    EXPECT_EQ(preferences.menuBarStyle, MenuBarStyle::icon);
    EXPECT_EQ(preferences.pinnedProvider, grok);
    EXPECT_FALSE(preferences.showResetTime);
    EXPECT_THAT(preferences.menuBarWindows.value(),
                ElementsAre(Pair("claude", "weekly.opus-4"), Pair("codex", "a,b=c")));
    EXPECT_EQ(preferences.warningThreshold, 0.4);
    EXPECT_EQ(preferences.criticalThreshold, 0.15);
    EXPECT_FALSE(preferences.tintEnabled);
    EXPECT_THAT(preferences.providerOrder.value(), ElementsAre(codex, claude, grok, cursor));
    EXPECT_THAT(preferences.enabledProviders(), ElementsAre(codex, claude, grok));
    EXPECT_FALSE(preferences.claudeLiveLimits);
    EXPECT_EQ(preferences.summaryUnit, SummaryUnit::tokens);
    EXPECT_EQ(preferences.popoverTab, PopoverTab::models);
    EXPECT_EQ(preferences.lastPruneAt(), pruned);

    preferences.disabledProviders = ProviderSet{};
    preferences.menuBarWindows = WindowChoices{};
    EXPECT_TRUE(preferences.save());
    Process again(file);
    EXPECT_THAT(again.preferences.disabledProviders.value(), IsEmpty());
    EXPECT_THAT(again.preferences.menuBarWindows.value(), IsEmpty());
}

TEST_F(PreferencesTest, FallsBackWhereTheFileMakesNoSense) {
    Process odd = reading("[General]\nmenuBarStyle=Icon\npinnedProvider=copilot\n"
                          "showResetTime=maybe\ntintEnabled=a, b\nmenuBarWindows=session\n"
                          "warningThreshold=high\ncriticalThreshold=\n"
                          "providerOrder=grok, copilot, grok, codex\n"
                          "disabledProviders=copilot, cursor\nclaudeLiveLimits=0\n"
                          "summaryUnit=Tokens\npopoverTab=@Invalid()\nlastPruneAt=yesterday\n");
    const Preferences& preferences = odd.preferences;
    EXPECT_EQ(preferences.menuBarStyle, MenuBarStyle::provider);
    EXPECT_EQ(preferences.pinnedProvider, claude);
    EXPECT_TRUE(preferences.showResetTime);
    EXPECT_TRUE(preferences.tintEnabled);
    EXPECT_THAT(preferences.menuBarWindows.value(), IsEmpty());
    EXPECT_EQ(preferences.warningThreshold, 0.25);
    EXPECT_EQ(preferences.criticalThreshold, 0.1);
    EXPECT_THAT(preferences.providerOrder.value(), ElementsAre(grok, codex, claude, cursor));
    EXPECT_THAT(preferences.disabledProviders.value(), ElementsAre(cursor));
    EXPECT_FALSE(preferences.claudeLiveLimits);
    EXPECT_EQ(preferences.summaryUnit, SummaryUnit::cost);
    EXPECT_EQ(preferences.popoverTab, PopoverTab::usage);
    EXPECT_FALSE(preferences.lastPruneAt());
}

TEST_F(PreferencesTest, NamesLinesThatAreNoSettingsAndSavesTheOthers) {
    const testing::CapturedLog log;
    Process broken = reading(
        std::string("[General]\nwarningThreshold=0.3\n\0\xff[[[=\nno setting\n; note\n[x", 57));
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("line 4 of "), HasSubstr("line 6 of ")));
    broken.preferences.tintEnabled = false;
    EXPECT_TRUE(broken.preferences.save());
    Process again(file);
    EXPECT_FALSE(again.preferences.tintEnabled);
    EXPECT_EQ(again.preferences.warningThreshold, 0.3);
    EXPECT_EQ(log.lines().size(), 2U);
}

TEST_F(PreferencesTest, NeitherWaitsForNorReplacesWhatIsNoOrdinaryFile) {
    const testing::CapturedLog log;
    Process process = reading("[General]\nwarningThreshold=0.3\n");
    const auto isRefused = [&](const char* reason) {
        process.preferences.reload();
        process.preferences.tintEnabled = !process.preferences.tintEnabled;
        EXPECT_FALSE(process.preferences.save());
        Process fresh(file);
        EXPECT_EQ(fresh.preferences.warningThreshold, 0.25) << "the defaults hold";
        fresh.preferences.tintEnabled = false;
        EXPECT_FALSE(fresh.preferences.save());
        EXPECT_THAT(log.lines().back(), HasSubstr(reason));
    };
    std::filesystem::resize_file(file, 2'000'000);
    isRefused("is too large");
    std::filesystem::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    isRefused("is not a regular file");
    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    isRefused("is not a regular file");
    EXPECT_EQ(process.preferences.warningThreshold, 0.3) << "what was read last";
}

TEST_F(PreferencesTest, KeepsCriticalBelowWarningWhenReading) {
    struct Case {
        const char *warning, *critical;
        double expectedWarning, expectedCritical;
    };
    for (const auto& [warning, critical, expectedWarning, expectedCritical] :
         {Case{"0.05", "0.1", 0.1, 0.05}, Case{"0.15", "0.3", 0.15, 0.1},
          Case{"0.25", "0.2", 0.25, 0.2}, Case{"0.25", "0.24", 0.25, 0.2},
          Case{"0.25", "0.01", 0.25, 0.05}, Case{"0.1", "0.01", 0.1, 0.05},
          Case{"nan", "nan", 0.1, 0.05}, Case{"-1", "-1", 0.1, 0.05}}) {
        const TemporaryDirectory directory;
        Process process(
            directory.write("settings.conf", std::string("[General]\nwarningThreshold=") + warning +
                                                 "\ncriticalThreshold=" + critical + '\n'));
        EXPECT_EQ(process.preferences.warningThreshold, expectedWarning) << warning;
        EXPECT_EQ(process.preferences.criticalThreshold, expectedCritical) << critical;
    }
}

TEST_F(PreferencesTest, KeepsCriticalBelowWarningWhenAssigning) {
    Process process(file);
    Preferences& preferences = process.preferences;
    preferences.criticalThreshold = 0.9;
    EXPECT_DOUBLE_EQ(preferences.criticalThreshold, 0.2);
    EXPECT_DOUBLE_EQ(process.settings->value("criticalThreshold").toDouble(), 0.2);
    int changes = 0;
    const auto notifier = preferences.criticalThreshold.addNotifier([&changes] { ++changes; });
    preferences.warningThreshold = 0.01;
    EXPECT_DOUBLE_EQ(preferences.warningThreshold, 0.1);
    EXPECT_DOUBLE_EQ(preferences.criticalThreshold, 0.05);
    EXPECT_EQ(changes, 1);
    preferences.warningThreshold = 0.5; // as after a restart with the same file
    EXPECT_DOUBLE_EQ(preferences.criticalThreshold, 0.2);

    preferences.warningThreshold = 0.25;
    process.settings->setValue("criticalThreshold", 0.24);
    preferences.reload();
    preferences.criticalThreshold = preferences.criticalThreshold.peek(); // what is shown is meant
    preferences.warningThreshold = 0.5;
    EXPECT_DOUBLE_EQ(preferences.criticalThreshold, 0.2);
}

TEST_F(PreferencesTest, NotifiesOfOtherValuesOnly) {
    Process process(file);
    Preferences& preferences = process.preferences;
    int changes = 0;
    const auto notifier = preferences.disabledProviders.addNotifier([&changes] { ++changes; });
    QProperty<std::size_t> enabled;
    enabled.setBinding([&preferences] { return preferences.enabledProviders().size(); });
    preferences.disabledProviders = ProviderSet{};
    EXPECT_EQ(changes, 0);
    preferences.disabledProviders = ProviderSet{grok};
    preferences.disabledProviders = ProviderSet{grok};
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(enabled.value(), 3U); // a binding that reads settings follows them
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
    EXPECT_TRUE(comesTrue([&] { return unit == SummaryUnit::tokens; }));
    EXPECT_THAT(windows.value(), ElementsAre(Pair("codex", "weekly")));
    replace("[General]\nsummaryUnit=cost\n");
    EXPECT_TRUE(comesTrue([&] { return unit == SummaryUnit::cost; }));
    EXPECT_THAT(windows.value(), IsEmpty());
    std::ofstream(file) << "[General]\nsummaryUnit=tokens\npinnedProvider=grok\n"; // in place
    EXPECT_TRUE(comesTrue([&] { return application.preferences.pinnedProvider == grok; }));
    std::filesystem::remove(file);
    EXPECT_TRUE(comesTrue([&] { return application.preferences.pinnedProvider == claude; }));
    EXPECT_EQ(untouched, 0);

    // What both change at the same time, both keep.
    replace("[General]\nsummaryUnit=tokens\n");
    application.preferences.showDockIcon = true;
    EXPECT_TRUE(comesTrue([&] { return unit == SummaryUnit::tokens; }));
    EXPECT_TRUE(application.preferences.save());
    EXPECT_THAT(contents(), HasSubstr("showDockIcon=true"));
    EXPECT_THAT(contents(), HasSubstr("summaryUnit=tokens"));
}

TEST_F(PreferencesTest, KeepsTheFileToItsOwner) {
    Process process(file);
    process.preferences.showDockIcon = true;
    ASSERT_TRUE(process.preferences.save());
    using std::filesystem::perms;
    using std::filesystem::status;
    EXPECT_EQ(status(file).permissions(), perms::owner_read | perms::owner_write);
    EXPECT_EQ(status(file.parent_path()).permissions(), perms::owner_all);
}

} // namespace
} // namespace tokwatch

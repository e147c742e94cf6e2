#include "Tokwatch/Views/Onboarding/OnboardingView.h"

#include "KivoLaunch/LoginItem.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/TemporaryDirectory.h"
#include "Tokwatch/Preferences/Preferences.h"

#include <QSettings>
#include <QSignalSpy>

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

constexpr const char* claude = ".claude/projects/a";
constexpr const char* codex = ".codex/auth.json";
constexpr const char* grok = ".grok/sessions/a";
constexpr const char* cursor = ".config/Cursor/User/globalStorage/state.vscdb";

class OnboardingTest : public ::testing::Test {
  protected:
    void find(std::initializer_list<const char*> files) {
        for (const char* file : files)
            home.write(file, "");
    }
    OnboardingView view() { return {preferences, ProviderLocations{home.path()}, loginItem}; }
    static std::string told(const OnboardingStep& step) {
        return (step.name + "\n" + step.reads + "\n" + step.asks).toStdString();
    }

    testing::TemporaryDirectory home;
    std::unique_ptr<QSettings> settings = settingsFile(home / "settings.conf");
    Preferences preferences{*settings};
    kivo::LoginItem loginItem{home / "autostart", {"app", "App", "", {"/bin/app"}, "app"}};
};

TEST_F(OnboardingTest, TellsWhatIsReadAndWhoIsAskedOfEachProviderThatIsFound) {
    find({grok, claude});
    ASSERT_EQ(onboardingSteps({home.path()}).size(), 2U);
    find({codex, cursor});
    const std::vector<OnboardingStep> steps = onboardingSteps({home.path()});
    ASSERT_EQ(steps.size(), 4U);
    EXPECT_THAT(told(steps[0]), AllOf(HasSubstr("~/.claude/projects"), HasSubstr("login"),
                                      HasSubstr("api.anthropic.com")));
    EXPECT_THAT(told(steps[1]), AllOf(HasSubstr("~/.codex/sessions"), HasSubstr("login"),
                                      HasSubstr("chatgpt.com")));
    EXPECT_THAT(told(steps[2]), AllOf(HasSubstr("~/.grok/sessions"), HasSubstr("asks nobody")));
    EXPECT_EQ(steps[3].name + steps[3].asks, "Cursor");
}

TEST_F(OnboardingTest, SaysWhereItLooksWhenThereIsNone) {
    const std::vector<OnboardingStep> steps = onboardingSteps({home.path()});
    ASSERT_EQ(steps.size(), 1U);
    EXPECT_THAT(told(steps[0]),
                AllOf(HasSubstr("~/.claude/projects"), HasSubstr("~/.codex/sessions"),
                      HasSubstr("~/.grok/sessions"), HasSubstr("~/.config/Cursor")));
}

TEST_F(OnboardingTest, ShowsTheSignThatTheItemHas) {
    testing::needEventLoop();
    OnboardingView welcome = view();
    QSignalSpy changes(&welcome, &OnboardingView::signChanged);
    EXPECT_EQ(welcome.sign(), "claude");
    preferences.pinnedProvider = ProviderID::codex; // which came first
    testing::settle();
    EXPECT_EQ(welcome.sign(), "codex");
    preferences.menuBarStyle = MenuBarStyle::icon;
    testing::settle();
    EXPECT_EQ(welcome.sign(), "");
    EXPECT_EQ(changes.count(), 2);

    QSignalSpy finished(&welcome, &OnboardingView::finished);
    welcome.finish();
    EXPECT_EQ(finished.count(), 1);
    EXPECT_TRUE(preferences.hasCompletedOnboarding);
}

TEST_F(OnboardingTest, SwitchesLiveLimitsAndTheStartAtLogin) {
    OnboardingView welcome = view();
    QSignalSpy liveLimits(&welcome, &OnboardingView::liveLimitsChanged);
    welcome.setLiveLimits(false);
    EXPECT_FALSE(preferences.claudeLiveLimits);
    preferences.claudeLiveLimits = true; // as another process can do it
    EXPECT_TRUE(welcome.liveLimits());
    EXPECT_EQ(liveLimits.count(), 2);

    welcome.setStartsAtLogin(true);
    EXPECT_TRUE(loginItem.isEnabled());
    welcome.setStartsAtLogin(false);
    EXPECT_FALSE(welcome.startsAtLogin());
}

} // namespace
} // namespace tokwatch

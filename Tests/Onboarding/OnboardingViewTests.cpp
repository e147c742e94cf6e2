#include "OnboardingView.h"

#include "Preferences.h"
#include "TemporaryDirectory.h"

#include <QSettings>
#include <QSignalSpy>

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class OnboardingTest : public ::testing::Test {
  protected:
    testing::TemporaryDirectory home;
    std::unique_ptr<QSettings> settings = settingsFile(home / "settings.conf");
    Preferences preferences{*settings};

    OnboardingView view() { return {preferences, ProviderLocations{home.path()}}; }
    /// Everything that a step tells.
    static std::string told(const OnboardingStep& step) {
        QString all = step.name + "\n" + step.subtitle + "\n";
        for (const QVariant& each : step.facts) {
            const auto fact = each.value<OnboardingFact>();
            all += fact.title + "\n" + fact.sentence + "\n";
        }
        return all.toStdString();
    }
};

TEST_F(OnboardingTest, HasAStepForEachProviderThatIsFound) {
    struct Case {
        std::vector<const char*> files;
        std::vector<std::string> ids;
    };
    const Case cases[]{
        {{".claude/projects/a"}, {"claude"}},
        {{".grok/sessions/a", ".claude/projects/a"}, {"claude", "grok"}},
        {{".codex/auth.json", ".config/Cursor/User/globalStorage/state.vscdb"},
         {"codex", "cursor"}},
    };
    for (const Case& each : cases) {
        const testing::TemporaryDirectory place;
        for (const char* file : each.files)
            place.write(file, "");
        std::vector<std::string> ids;
        for (const OnboardingStep& step : onboardingSteps({place.path()}))
            ids.push_back(step.id.toStdString());
        EXPECT_EQ(ids, each.ids);
    }
}

TEST_F(OnboardingTest, TellsWhatIsReadAndWhichLoginIsAskedForWhy) {
    for (const char* file : {".claude/projects/a", ".codex/auth.json", ".grok/sessions/a",
                             ".config/Cursor/User/globalStorage/state.vscdb"})
        home.write(file, "");
    const std::vector<OnboardingStep> steps = onboardingSteps({home.path()});
    ASSERT_EQ(steps.size(), 4U);
    EXPECT_THAT(told(steps[0]),
                AllOf(HasSubstr("~/.claude/projects"), HasSubstr("Asks for Claude Code's login"),
                      HasSubstr("api.anthropic.com"), HasSubstr("limits")));
    EXPECT_THAT(told(steps[1]),
                AllOf(HasSubstr("~/.codex/sessions"), HasSubstr("Asks for Codex's login"),
                      HasSubstr("~/.codex/auth.json"), HasSubstr("chatgpt.com")));
    EXPECT_THAT(told(steps[2]),
                AllOf(HasSubstr("~/.grok/sessions"), HasSubstr("Asks for no login")));
    EXPECT_THAT(told(steps[3]), AllOf(HasSubstr("~/.config/Cursor"), HasSubstr("no usage data"),
                                      HasSubstr("Asks for no login")));
}

TEST_F(OnboardingTest, SaysWhereItLooksWhenThereIsNone) {
    OnboardingView empty = view();
    EXPECT_EQ(empty.count(), 1);
    EXPECT_TRUE(empty.step().isNone());
    EXPECT_THAT(told(empty.step()),
                AllOf(HasSubstr("~/.claude/projects"), HasSubstr("~/.codex/sessions"),
                      HasSubstr("~/.grok/sessions"), HasSubstr("~/.config/Cursor")));
    EXPECT_EQ(empty.nextText(), "Start Using Tokwatch");
}

TEST_F(OnboardingTest, LeadsThroughTheSteps) {
    home.write(".claude/projects/a", "");
    home.write(".grok/sessions/a", "");
    OnboardingView steps = view();
    QSignalSpy finished(&steps, &OnboardingView::finished);
    EXPECT_EQ(steps.title(), "Welcome to Tokwatch");
    EXPECT_EQ(steps.progress(), "Step 1 of 2");
    EXPECT_EQ(steps.nextText(), "Continue");
    steps.back(); // there is none before
    steps.next();
    EXPECT_EQ(steps.step().name, "Grok");
    EXPECT_EQ(steps.nextText(), "Start Using Tokwatch");
    steps.back();
    EXPECT_EQ(steps.step().name, "Claude");
    EXPECT_FALSE(preferences.hasCompletedOnboarding);
    steps.next();
    steps.next();
    EXPECT_EQ(finished.count(), 1);
    EXPECT_TRUE(preferences.hasCompletedOnboarding);
}

TEST_F(OnboardingTest, CanBeSkipped) {
    home.write(".claude/projects/a", "");
    home.write(".grok/sessions/a", "");
    OnboardingView steps = view();
    QSignalSpy finished(&steps, &OnboardingView::finished);
    steps.skip();
    EXPECT_EQ(finished.count(), 1);
    EXPECT_TRUE(preferences.hasCompletedOnboarding);
}

TEST_F(OnboardingTest, ShowsTheSettingForLiveLimits) {
    OnboardingView steps = view();
    QSignalSpy changes(&steps, &OnboardingView::liveLimitsChanged);
    steps.setLiveLimits(false);
    EXPECT_FALSE(preferences.claudeLiveLimits);
    EXPECT_FALSE(steps.liveLimits());
    preferences.claudeLiveLimits = true; // as the popover can do it
    EXPECT_TRUE(steps.liveLimits());
    EXPECT_EQ(changes.count(), 2);
}

} // namespace
} // namespace tokwatch

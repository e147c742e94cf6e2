#include "Tokwatch/Views/Settings/MenuBarView.h"

#include "KivoTheme/Contrast.h"
#include "Tests/Settings/SettingsWorld.h"
#include "Tokwatch/StatusItem/StatusTint.h"
#include "Tokwatch/Views/Settings/StatusPreview.h"

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;
using enum ProviderID;

class MenuBarViewTest : public ::testing::Test {
  protected:
    testing::SettingsWorld world;
    MenuBarView view{*world.model, world.clock};
    Preferences& preferences = *world.preferences;

    const MenuBarState& state() {
        world.settle();
        return view.state();
    }
    std::vector<WindowRow> windows() {
        world.settle();
        std::vector<WindowRow> rows;
        RowModel& model = *view.windows();
        for (int at = 0; at < model.count(); ++at)
            rows.push_back(model.data(model.index(at), Qt::UserRole).value<WindowRow>());
        return rows;
    }
};

TEST_F(MenuBarViewTest, ChoosesAmongTheEnabledProviders) {
    EXPECT_EQ(state().providers, (QStringList{"Claude", "Codex"})) << "others have no number";
    EXPECT_EQ(state().provider, 0);
    view.setProvider(1);
    EXPECT_EQ(preferences.pinnedProvider.peek(), codex);
    EXPECT_EQ(state().provider, 1);
    view.setProvider(9);
    EXPECT_EQ(preferences.pinnedProvider.peek(), codex);

    // What the item shows while the pinned one is turned off.
    preferences.disabledProviders = {codex};
    EXPECT_EQ(state().providers, (QStringList{"Claude"}));
    EXPECT_EQ(state().provider, 0);
    preferences.pinnedProvider = grok; // from the command line
    EXPECT_EQ(state().providers, (QStringList{"Claude", "Grok"}));
    EXPECT_EQ(state().provider, 1);

    preferences.disabledProviders = {claude, codex, grok, cursor};
    EXPECT_EQ(state().provider, -1);
    EXPECT_FALSE(state().showsProvider);
}

TEST_F(MenuBarViewTest, HasNoProviderToChooseForTheIcon) {
    EXPECT_TRUE(state().showsProvider);
    view.setStyle(0);
    EXPECT_EQ(preferences.menuBarStyle.peek(), MenuBarStyle::icon);
    EXPECT_FALSE(state().showsProvider);
    EXPECT_EQ(state().preview.text, "");
    EXPECT_EQ(state().preview.spoken, "Tokwatch");
    view.setStyle(1);
    EXPECT_EQ(preferences.menuBarStyle.peek(), MenuBarStyle::provider);
}

TEST_F(MenuBarViewTest, ChoosesAWindowForEachProvider) {
    // Before any limit is known there is one choice; those without limits have none ever.
    EXPECT_THAT(windows(), ElementsAre(WindowRow{"claude", "Claude", {"Lowest left"}, 0},
                                       WindowRow{"codex", "Codex", {"Lowest left"}, 0}));
    world.knowLimits(claude, 0.5, 0.75);
    const QStringList labels{"Lowest left", "Session", "Weekly"};
    EXPECT_EQ(windows()[0], (WindowRow{"claude", "Claude", labels, 0}));

    view.setWindow("claude", 2);
    EXPECT_THAT(preferences.menuBarWindows.peek(), ElementsAre(Pair("claude", "weekly")));
    EXPECT_EQ(windows()[0].current, 2);
    view.setWindow("claude", 3);
    view.setWindow("nobody", 1);
    EXPECT_THAT(preferences.menuBarWindows.peek(), ElementsAre(Pair("claude", "weekly")));
    view.setWindow("claude", 0);
    EXPECT_THAT(preferences.menuBarWindows.peek(), ElementsAre());

    // A window that is gone is shown as what stands in for it.
    preferences.menuBarWindows = {{"claude", "yearly"}, {"codex", "weekly"}};
    EXPECT_EQ(windows()[0].current, 0);
    preferences.disabledProviders = {claude};
    EXPECT_THAT(windows(), ElementsAre(WindowRow{"codex", "Codex", {"Lowest left"}, 0}));
}

TEST_F(MenuBarViewTest, KeepsCriticalBelowWarning) {
    struct Case {
        double warning;
        double critical;
        const char* warningText;
        const char* criticalText;
        double highestCritical;
    };
    const Case cases[]{{0.25, 0.1, "25%", "10%", 0.2},
                       {0.3, 0.3, "30%", "25%", 0.25},
                       {0.02, 0.01, "10%", "5%", 0.05},
                       {0.29999999, 0.1499999, "30%", "15%", 0.25}};
    for (const Case& each : cases) {
        view.setWarning(each.warning);
        view.setCritical(each.critical);
        EXPECT_EQ(state().warningText, each.warningText);
        EXPECT_EQ(state().criticalText, each.criticalText);
        EXPECT_NEAR(state().highestCritical, each.highestCritical, 1e-9);
    }
    // Whatever the warning level is moved to takes the critical one along.
    view.setWarning(0.5);
    view.setCritical(0.4);
    view.setWarning(0.3);
    EXPECT_EQ(state().criticalText, "25%");
}

TEST_F(MenuBarViewTest, PreviewsTheItem) {
    EXPECT_TRUE(state().preview.isSample);
    EXPECT_EQ(view.previewNote(), "A sample, until your limits are known.");
    EXPECT_EQ(state().preview.text, "42% · 3h 5m");
    EXPECT_EQ(state().preview.provider, "claude");

    world.knowLimits(codex, 0.125, 0.75);
    EXPECT_FALSE(state().preview.isSample);
    EXPECT_EQ(state().preview.text, "") << "nothing of the pinned provider is known";
    view.setProvider(1);
    EXPECT_EQ(state().preview.text, "12%");
    EXPECT_EQ(state().preview.percent, 12);
    EXPECT_EQ(state().preview.severity, 1);
    EXPECT_EQ(state().preview.spoken, "Codex 12%, yellow");
    view.setCritical(0.2);
    EXPECT_EQ(state().preview.spoken, "Codex 12%, red");
    view.setTint(false);
    EXPECT_EQ(state().preview.spoken, "Codex 12%");
    view.setWindow("codex", 2);
    EXPECT_EQ(state().preview.text, "75%");

    preferences.disabledProviders = {claude, codex, grok, cursor};
    EXPECT_FALSE(state().preview.isSample);
    EXPECT_EQ(state().preview.spoken, "Tokwatch");
}

TEST_F(MenuBarViewTest, FollowsOtherProcesses) {
    world.changeElsewhere([](Preferences& others) {
        others.showResetTime = false;
        others.warningThreshold = 0.5;
    });
    EXPECT_FALSE(state().showResetTime);
    EXPECT_EQ(state().warningText, "50%");
    EXPECT_EQ(state().preview.spoken, "Claude 42%, yellow");
}

TEST(StatusPreview, IsReadableOnItsPanels) {
    for (const bool isDark : {false, true})
        for (const Severity severity : {Severity::normal, Severity::warning, Severity::critical})
            EXPECT_GE(kivo::contrastRatio(statusTint(severity, isDark), panelColor(isDark)), 4.5)
                << isDark << static_cast<int>(severity);
}

} // namespace
} // namespace tokwatch

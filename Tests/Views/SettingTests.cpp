#include "Tests/Support/EventLoop.h"
#include "Tests/Views/ViewWorld.h"
#include "Tokwatch/Views/Menu/MenuView.h"
#include "Tokwatch/Views/Onboarding/OnboardingView.h"
#include "Tokwatch/Views/Settings/HotKeyView.h"
#include "Tokwatch/Views/Settings/MenuBarView.h"
#include "Tokwatch/Views/Settings/SettingsView.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using enum ProviderID;
using ::testing::IsEmpty;

struct SettingsViewTest : ::testing::Test, testing::ViewWorld {
    std::optional<SettingsView> view{std::in_place, *model, clock, places};

    ProviderSettingsRow provider(ProviderID inTheUsualOrder) {
        return testing::rowsOf<ProviderSettingsRow>(
            *view->providers()->rows())[static_cast<std::size_t>(inTheUsualOrder)];
    }
};

TEST_F(SettingsViewTest, StartsAtLoginOrSaysWhyItCannot) {
    GeneralView& general = *view->general();
    general.setStartsAtLogin(true);
    EXPECT_TRUE(loginItem.isEnabled());
    // Somebody else removes the entry; it is noticed when the clock is looked at.
    std::filesystem::remove_all(home / ".config/autostart");
    pass(Seconds{30});
    EXPECT_FALSE(general.state().startsAtLogin);

    home.write(".config/autostart", "no directory");
    general.setStartsAtLogin(true);
    settle();
    EXPECT_EQ(general.state().unwritable, "~/.config/autostart/app.tokwatch.desktop");
    std::filesystem::remove(home / ".config/autostart");
    general.setStartsAtLogin(true);
    settle();
    EXPECT_EQ(general.state().unwritable, "");
}

TEST_F(SettingsViewTest, AsksForHotKeysWhenItOpensAndNotForEver) {
    testing::FakeHotKey* desktop = nullptr;
    ChosenHotKey chosen(desktopPreferences, [&desktop] {
        auto made = std::make_unique<testing::FakeHotKey>();
        desktop = made.get();
        return made;
    });
    ASSERT_EQ(desktop, nullptr);
    HotKeyView(desktopPreferences, chosen, {});
    emit desktop->settled(kivo::HotKeyState::silent);
    emit desktop->arrived();
    EXPECT_EQ(desktop->looks, 1);
    EXPECT_EQ(chosen.status().state, kivo::HotKeyState::none) << "it may be there by now";
}

TEST_F(SettingsViewTest, ReReadsWithProgress) {
    home.write(".claude/projects/a/b.jsonl", "");
    home.write(".config/Cursor/User/globalStorage/state.vscdb", "");
    view.emplace(*model, clock, places);
    for (const ProviderID id : allCases<ProviderID>)
        EXPECT_EQ(provider(id).canReread, id == claude) << "the others' logs are not there";
    view->providers()->reread("claude");
    for (const auto& [progress, text, fraction] :
         {std::tuple{IndexingProgress{codex, 5'000'000, 10'000'000}, "Re-reading…", 0.0},
          {IndexingProgress{claude, 5'000'000, 20'000'000}, "Re-reading: 5.0 MB of 20.0 MB",
           0.25}}) {
        settle();
        EXPECT_TRUE(provider(claude).isRereading);
        indexer.report(progress);
        settle();
        EXPECT_EQ(provider(claude).rereadingText, text);
        EXPECT_EQ(provider(claude).rereadFraction, fraction);
    }
    finishAllPasses();
    EXPECT_FALSE(provider(claude).isRereading);
}

struct MenuBarViewTest : ::testing::Test, testing::ViewWorld {
    MenuBarView view{*model, clock};

    const MenuBarState& state() {
        settle();
        return view.state();
    }
    static QString labels(const QVariantList& choices) {
        QString labels;
        for (const QVariant& choice : choices)
            labels += choice.value<NamedChoice>().label + u' ';
        return labels;
    }
    std::vector<WindowRow> windows() {
        settle();
        return testing::rowsOf<WindowRow>(*view.windows());
    }
};

TEST_F(MenuBarViewTest, ChoosesAmongTheEnabledProviders) {
    EXPECT_EQ(labels(state().providers), "Claude Codex ") << "others have no number";
    view.setProvider("codex");
    view.setProvider("nobody");
    EXPECT_EQ(preferences->pinnedProvider.peek(), codex);
    EXPECT_EQ(state().provider, "codex");
    // What the item shows while the pinned one is turned off.
    preferences->disabledProviders = {codex};
    EXPECT_EQ(labels(state().providers) + state().provider, "Claude claude");
    preferences->pinnedProvider = grok; // from the command line
    EXPECT_EQ(labels(state().providers) + state().provider, "Claude Grok grok");
}

TEST_F(MenuBarViewTest, ChoosesAWindowForEachProvider) {
    // Before any limit is known there is one choice; those without limits have none ever.
    EXPECT_THAT(windows(), ElementsAre(WindowRow{"claude", "Claude", {}, {}},
                                       WindowRow{"codex", "Codex", {}, {}}));
    knowLimits(claude, 0.5, 0.75);
    view.setWindow("claude", "weekly");
    EXPECT_EQ(labels(windows()[0].windows) + windows()[0].current, "Session Weekly weekly");
    view.setWindow("claude", "");
    EXPECT_THAT(preferences->menuBarWindows.peek(), IsEmpty());
    preferences->menuBarWindows = {{"claude", "yearly"}};
    EXPECT_EQ(windows()[0].current, "") << "what stands in for one that is gone";
}

TEST_F(MenuBarViewTest, PreviewsTheItem) {
    const auto preview = [this] { return state().preview; };
    EXPECT_TRUE(preview().isSample);
    EXPECT_EQ(preview().provider + " " + preview().text, "claude 42% · 3h 5m");
    knowLimits(codex, 0.125, 0.75);
    EXPECT_FALSE(preview().isSample);
    EXPECT_EQ(preview().spoken, "Codex 12%, yellow") << "nothing of the usual one is known";
    EXPECT_EQ(state().provider, "codex");
    view.setProvider("claude");
    EXPECT_EQ(preview().missing, "Claude has no number. Looking up the limits…");
    view.setProvider("codex");
    view.setCritical(0.2);
    EXPECT_EQ(preview().spoken, "Codex 12%, red");
    view.setTint(false);
    EXPECT_EQ(preview().spoken, "Codex 12%");
    view.setWindow("codex", "weekly");
    EXPECT_EQ(preview().text, "75%");
    preferences->disabledProviders = {claude, codex, grok, cursor};
    EXPECT_EQ(preview().spoken, "Tokwatch");
}

TEST(OnboardingView, SwitchesWhoIsAsked) {
    testing::ViewWorld world;
    Preferences& preferences = *world.preferences;
    OnboardingView welcome(preferences, ProviderLocations{world.home.path()}, world.loginItem);
    for (const char* provider : {"claude", "codex"}) {
        welcome.setAsked(provider, false);
        EXPECT_EQ(welcome.asked()[provider], false);
    }
    EXPECT_FALSE(preferences.claudeLiveLimits);
    EXPECT_EQ(preferences.disabledProviders.value(), ProviderSet{codex});
    welcome.finish();
    EXPECT_TRUE(preferences.hasCompletedOnboarding);
}

TEST(MenuView, IsUsedByKeyboardAndRunsWhatWasChosenOnceItIsClosed) {
    testing::needEventLoop();
    int refreshes = 0;
    MenuView view({{"Refresh", QKeySequence(Qt::CTRL | Qt::Key_R), [&] { ++refreshes; }},
                   kivo::MenuEntry::separator(),
                   {"Quit", {}, {}}});
    std::string walk;
    for (const int direction : {1, 1, 1, -1, -1}) {
        view.move(direction);
        walk += std::to_string(view.current());
    }
    EXPECT_EQ(walk, "02020");
    view.setCurrent(1);
    EXPECT_EQ(view.current(), -1) << "at a separator";
    view.move(-1);
    EXPECT_EQ(view.current(), 2);

    QSignalSpy closed(&view, &MenuView::closeRequested);
    view.choose(1);
    EXPECT_EQ(closed.count(), 0);
    view.choose(0);
    EXPECT_EQ(closed.count(), 1);
    EXPECT_EQ(refreshes, 0);
    testing::settle();
    EXPECT_EQ(refreshes, 1);
}

} // namespace
} // namespace tokwatch

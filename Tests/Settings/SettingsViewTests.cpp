#include "Tokwatch/Views/Settings/SettingsView.h"

#include "Tests/Settings/SettingsWorld.h"
#include "Tokwatch/Views/Common/HomePath.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::Eq;
using ::testing::HasSubstr;
using enum ProviderID;

class SettingsViewTest : public ::testing::Test {
  protected:
    testing::SettingsWorld world;
    std::optional<SettingsView> view{std::in_place, *world.model, world.clock, world.places};
    Preferences& preferences = *world.preferences;

    std::vector<ProviderSettingsRow> providers() {
        std::vector<ProviderSettingsRow> rows;
        RowModel& model = *view->providers()->rows();
        for (int at = 0; at < model.count(); ++at)
            rows.push_back(model.data(model.index(at), Qt::UserRole).value<ProviderSettingsRow>());
        return rows;
    }
    ProviderSettingsRow provider(ProviderID id) {
        for (const ProviderSettingsRow& row : providers())
            if (row.id.toStdString() == rawValue(id)) return row;
        return {};
    }
    std::string order() {
        std::string ids;
        for (const ProviderSettingsRow& row : providers())
            ids += row.id.toStdString() + ' ';
        return ids;
    }
};

TEST_F(SettingsViewTest, GeneralActsAtOnceAndFollowsOthers) {
    GeneralView& general = *view->general();
    general.setShowDockIcon(true);
    general.setUnit(1);
    EXPECT_TRUE(preferences.showDockIcon);
    EXPECT_EQ(preferences.summaryUnit.peek(), SummaryUnit::tokens);
    world.settle();
    EXPECT_TRUE(general.state().showDockIcon);
    EXPECT_EQ(general.state().unit, 1);
    world.changeElsewhere([](Preferences& others) { others.summaryUnit = SummaryUnit::cost; });
    EXPECT_EQ(general.state().unit, 0);
    EXPECT_TRUE(general.state().showDockIcon);
}

TEST_F(SettingsViewTest, StartsAtLogin) {
    GeneralView& general = *view->general();
    general.setStartsAtLogin(true);
    EXPECT_TRUE(general.state().startsAtLogin);
    EXPECT_TRUE(world.loginItem.isEnabled());
    // Somebody else removes the entry; it is noticed when the clock is looked at.
    world.loginItem.setEnabled(false);
    world.time.advance(Seconds{30});
    world.clock.advance();
    world.settle();
    EXPECT_FALSE(general.state().startsAtLogin);
}

TEST_F(SettingsViewTest, SaysThatTheLoginEntryCouldNotBeWritten) {
    GeneralView& general = *view->general();
    world.home.write(".config/autostart", "no directory");
    QSignalSpy changes(&general, &GeneralView::stateChanged);
    for (int attempt = 0; attempt < 2; ++attempt) {
        general.setStartsAtLogin(true);
        world.settle();
        EXPECT_GT(changes.count(), attempt) << "the switch has to move back each time";
        EXPECT_FALSE(general.state().startsAtLogin);
        EXPECT_EQ(general.state().loginProblem,
                  "~/.config/autostart/app.tokwatch.desktop could not be written.");
    }
    std::filesystem::remove(world.home / ".config/autostart");
    general.setStartsAtLogin(true);
    world.settle();
    EXPECT_EQ(general.state().loginProblem, "");
}

TEST_F(SettingsViewTest, TellsWhereThingsAreKept) {
    GeneralView& general = *view->general();
    EXPECT_EQ(general.state().dataPlace, "~/.local/share/Tokwatch/usage.sqlite");
    EXPECT_EQ(general.state().settingsPlace, "~/.config/Tokwatch/Tokwatch.conf");
    general.showData();
    general.showSettingsFile();
    const std::string home = "file://" + world.home.path().string();
    EXPECT_THAT(world.opened,
                ElementsAre(home + "/.local/share/Tokwatch", home + "/.config/Tokwatch"));

    world.opened.clear();
    world.places.database.reset();
    view.emplace(*world.model, world.clock, world.places);
    EXPECT_FALSE(view->general()->state().canShowData);
    EXPECT_THAT(view->general()->state().dataPlace.toStdString(), HasSubstr("In memory only"));
    view->general()->showData();
    EXPECT_THAT(world.opened, ElementsAre());
}

TEST_F(SettingsViewTest, OrdersProviders) {
    EXPECT_EQ(order(), "claude codex grok cursor ");
    struct Case {
        int from;
        int to;
        const char* order;
    };
    const Case cases[]{{0, 2, "codex grok claude cursor "},  {3, 0, "cursor codex grok claude "},
                       {1, 1, "cursor codex grok claude "},  {0, 4, "cursor codex grok claude "},
                       {-1, 2, "cursor codex grok claude "}, {2, 1, "cursor grok codex claude "}};
    for (const Case& each : cases) {
        view->providers()->move(each.from, each.to);
        EXPECT_EQ(order(), each.order) << each.from << " to " << each.to;
    }
    EXPECT_THAT(preferences.providerOrder.peek(), ElementsAre(cursor, grok, codex, claude));
    world.changeElsewhere([](Preferences& others) { others.providerOrder = {grok}; });
    EXPECT_EQ(order(), "grok claude codex cursor ");
}

TEST_F(SettingsViewTest, TurnsProvidersOnAndOff) {
    ProvidersView& page = *view->providers();
    page.setEnabled("codex", false);
    page.setEnabled("nobody", false);
    page.setClaudeLiveLimits(false);
    world.settle();
    EXPECT_THAT(preferences.disabledProviders.peek(), ElementsAre(codex));
    EXPECT_FALSE(provider(codex).isEnabled);
    EXPECT_FALSE(provider(claude).liveLimits);
    EXPECT_TRUE(provider(claude).canTurnLiveLimitsOff);
    EXPECT_FALSE(provider(codex).canTurnLiveLimitsOff);
    page.setEnabled("codex", true);
    world.settle();
    EXPECT_TRUE(provider(codex).isEnabled);
}

TEST_F(SettingsViewTest, TellsWhatIsRead) {
    EXPECT_EQ(provider(grok).reads, "Reads: ~/.grok/sessions");
    EXPECT_EQ(provider(cursor).note,
              "Live limits are not available in 1.0. Cursor shows no usage data yet, only that it "
              "is installed.");
    const auto lookAgain = [&] {
        world.time.advance(Seconds{30});
        world.clock.advance();
        world.settle();
    };
    constexpr auto onLinux =
        "Reads: ~/.config/Cursor/User/globalStorage/state.vscdb (detection only)";
    EXPECT_EQ(provider(cursor).reads, onLinux);
    EXPECT_EQ(provider(cursor).foundText, "Not found on this computer");
    const auto macPlace = "Library/Application Support/Cursor/User/globalStorage/state.vscdb";
    world.home.write(macPlace, "");
    lookAgain();
    EXPECT_EQ(provider(cursor).reads, "Reads: ~/Library/Application Support/Cursor/User/"
                                      "globalStorage/state.vscdb (detection only)");
    EXPECT_EQ(provider(cursor).foundText, "Found on this computer");
    world.home.write(".config/Cursor/User/globalStorage/state.vscdb", "");
    lookAgain();
    EXPECT_EQ(provider(cursor).reads, onLinux);
}

TEST_F(SettingsViewTest, ReReadsWithProgress) {
    world.home.write(".claude/projects/a/b.jsonl", "");
    world.home.write(".config/Cursor/User/globalStorage/state.vscdb", "");
    view.emplace(*world.model, world.clock, world.places);
    EXPECT_TRUE(provider(claude).canReread);
    EXPECT_FALSE(provider(codex).canReread) << "nothing is there";
    EXPECT_FALSE(provider(cursor).canReread) << "nothing is ever read";

    view->providers()->reread("claude");
    world.settle();
    EXPECT_TRUE(provider(claude).isRereading);
    EXPECT_EQ(provider(claude).rereadingText, "Re-reading…");
    EXPECT_EQ(provider(claude).rereadFraction, 0);
    world.indexer.report({codex, 5'000'000, 10'000'000});
    world.settle();
    EXPECT_EQ(provider(claude).rereadingText, "Re-reading…") << "another one's turn";
    world.indexer.report({claude, 5'000'000, 20'000'000});
    world.settle();
    EXPECT_EQ(provider(claude).rereadingText, "Re-reading: 5.0 MB of 20.0 MB");
    EXPECT_EQ(provider(claude).rereadFraction, 0.25);
    world.finishAllPasses();
    EXPECT_FALSE(provider(claude).isRereading);
}

TEST_F(SettingsViewTest, OpensTheToolsOwnPages) {
    for (const ProviderID id : allCases<ProviderID>)
        view->providers()->openUsagePage(QString::fromStdString(std::string(rawValue(id))));
    EXPECT_THAT(world.opened, ElementsAre("https://claude.ai/settings/usage",
                                          "https://chatgpt.com/codex/settings/usage",
                                          "https://grok.com", "https://cursor.com/dashboard"));
}

TEST_F(SettingsViewTest, ShowsPagesThatExist) {
    QSignalSpy changes(&*view, &SettingsView::pageChanged);
    for (const int page : {0, 3, 3, 7, -1})
        view->setPage(page);
    EXPECT_EQ(view->page(), 3);
    EXPECT_EQ(changes.count(), 1);
}

TEST(PrivacyView, Promises) {
    EXPECT_EQ(
        PrivacyView::promise(),
        "Tokwatch only sends each login to its own provider. Nothing else leaves your computer.");
}

TEST(HomePath, IsShortBelowTheHomeDirectory) {
    struct Case {
        const char* path;
        const char* text;
    };
    const Case cases[]{{"/home/me/.claude/projects", "~/.claude/projects"},
                       {"/home/meg/x", "/home/meg/x"},
                       {"/srv/data", "/srv/data"},
                       {"/home/me", "/home/me"}};
    for (const Case& each : cases)
        EXPECT_EQ(homePath(each.path, "/home/me"), each.text);
}

} // namespace
} // namespace tokwatch

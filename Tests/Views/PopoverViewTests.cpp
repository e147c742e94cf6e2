#include "Tokwatch/Views/Popover/PopoverView.h"

#include "Tests/App/ModelWorld.h"
#include "Tokwatch/Views/Common/ViewClock.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

namespace tokwatch {
namespace {

/// One response of a model with a price and of one without.
void addUsage(UsageStore& store, Date when) {
    UsageEvent event{ProviderID::claude, "priced", "s1", "k1", when, {}, std::nullopt};
    event.tokens.output = 1'000'000;
    event.tokens.cacheRead = 500'000;
    UsageEvent other = event;
    other.model = "unpriced";
    other.dedupKey = "k2";
    const std::vector<UsageEvent> events{event, other};
    store.ingest(events, Calendar::utc());
}

PriceTable onePrice() {
    ModelPrice price;
    price.output = 8;
    price.cacheRead = 1;
    return PriceTable({{"priced", price}});
}

class PopoverViewTest : public ::testing::Test, public testing::ModelWorld {
  protected:
    void startWithUsage() {
        *prices = onePrice();
        addUsage(*store, time.now());
        start();
    }
    void TearDown() override {
        for (const auto& [provider, source] : sources)
            while (source->underWay() > 0)
                source->answer(ProviderStatus::unavailable);
        settle();
    }
    void start() {
        makeModel();
        clock.emplace(time.clock());
        view.emplace(*model, *clock);
        model->start();
        settle();
        finishAllPasses();
    }

    std::optional<ViewClock> clock;
    std::optional<PopoverView> view;
};

TEST_F(PopoverViewTest, SumsUpInBothUnits) {
    startWithUsage();
    SummaryCard card = view->usage()->summary();
    EXPECT_EQ(card.period, "Last 30 days");
    EXPECT_EQ(card.headline + card.headlineNote, "$8.50 · API estimate");
    EXPECT_EQ(card.other, "3M tokens");
    EXPECT_EQ(card.exclusion, "Excludes models without a published price");
    ASSERT_EQ(card.segments.size(), 2);
    const auto cached = card.segments[0].value<SegmentRow>();
    EXPECT_EQ(cached.label + " " + cached.text, "Cache read $0.50");
    EXPECT_NEAR(cached.fraction, 0.5 / 8.5, 1e-9);
    ASSERT_EQ(card.tools.size(), 1);
    EXPECT_EQ(card.tools[0].value<ToolRow>().detail, "100.0% of cost");

    QSignalSpy changes(view->usage(), &UsageView::summaryChanged);
    view->usage()->toggleUnit();
    settle();
    EXPECT_EQ(changes.count(), 1);
    card = view->usage()->summary();
    EXPECT_EQ(card.headline + card.headlineNote, "3M tokens");
    EXPECT_EQ(card.other, "$8.50 · API estimate");
    // The same label has the same colour in both.
    EXPECT_EQ(card.segments[0].value<SegmentRow>().part, cached.part);
}

TEST_F(PopoverViewTest, NamesThePlacesWhenThereIsNothing) {
    start();
    EXPECT_EQ(view->usage()->summary().period, "No usage in the last 30 days");
    EXPECT_EQ(view->usage()->lookedAt(),
              (QStringList{"~/.claude/projects", "~/.codex/sessions", "~/.grok/sessions",
                           "~/.config/Cursor/User/globalStorage/state.vscdb"}));
    home.write(".claude/projects/readme", "");
    model->updatePresent();
    settle();
    EXPECT_TRUE(view->usage()->lookedAt().isEmpty());
}

TEST_F(PopoverViewTest, ActsForTheUser) {
    home.write(".claude/projects/readme", "");
    start();
    ASSERT_EQ(sources[ProviderID::claude]->attempts.size(), 1U);
    sources[ProviderID::claude]->answer(ProviderStatus::unreachable);
    settle();
    view->usage()->act("claude", ProviderAction::retry);
    EXPECT_EQ(sources[ProviderID::claude]->attempts.size(), 1U) << "sooner than a retry may be";
    EXPECT_TRUE(view->countsDown());
    advance(31);
    view->usage()->act("claude", ProviderAction::retry);
    ASSERT_EQ(sources[ProviderID::claude]->attempts.size(), 2U);
    sources[ProviderID::claude]->answer(ProviderStatus::accessDenied);
    settle();
    advance(60);
    view->usage()->act("claude", ProviderAction::allowAccess);
    EXPECT_EQ(sources[ProviderID::claude]->attempts.size(), 3U);

    preferences->claudeLiveLimits = false;
    view->usage()->act("claude", ProviderAction::turnOnLiveLimits);
    EXPECT_TRUE(preferences->claudeLiveLimits.peek());
    view->usage()->act("nobody", ProviderAction::retry);
}

TEST_F(PopoverViewTest, FollowsLimitsSettingsAndTime) {
    home.write(".claude/projects/readme", "");
    start();
    ProviderLimits limits = testing::someLimits(time.now());
    limits.windows[0].resetsAt = time.now() + Seconds{7200};
    model->apply(limits, ProviderID::claude);
    settle();
    const auto reset = [this] {
        const auto row =
            view->usage()->providers()->data(view->usage()->providers()->index(0), Qt::UserRole);
        return row.value<ProviderRow>().windows.front().value<LimitRow>().resetText;
    };
    EXPECT_EQ(reset(), "Resets in 2h 0m · Sat 1:07");
    time.jump(Seconds{3600});
    clock->advance();
    settle();
    EXPECT_EQ(reset(), "Resets in 1h 0m · 1:07");

    preferences->disabledProviders = {ProviderID::claude, ProviderID::codex};
    settle();
    EXPECT_EQ(view->usage()->providers()->count(), 0);
    EXPECT_EQ(view->usage()->quiet().size(), 2);
}

TEST_F(PopoverViewTest, TellsWhatIsUnderWay) {
    start();
    EXPECT_FALSE(view->footer()->state().isIndexing);
    model->refresh();
    settle();
    EXPECT_TRUE(view->footer()->state().isRefreshing);
    indexer.report({ProviderID::codex, 3'000'000, 3'500'000});
    settle();
    EXPECT_FALSE(view->footer()->state().isIndexing) << "over before anybody could read it";
    indexer.report({ProviderID::codex, 30'000'000, 120'000'000});
    settle();
    EXPECT_EQ(view->footer()->state().indexing, "Reading Codex: 30.0 MB of 120.0 MB");
    EXPECT_DOUBLE_EQ(view->footer()->state().indexedFraction, 0.25);
    finishAllPasses();
    settle();
    EXPECT_EQ(view->footer()->state(), (FooterState{false, {}, 0, false, "Updated just now"}));

    model->apply(testing::someLimits(time.now() - Seconds{7200}), ProviderID::claude);
    settle();
    EXPECT_EQ(view->footer()->state().updated, "Updated just now · limits 2 h ago");
}

TEST_F(PopoverViewTest, SaysThatARefreshCameTooSoonForLimits) {
    home.write(".claude/projects/readme", "");
    home.write(".codex/sessions/readme", "");
    start();
    sources[ProviderID::claude]->answer(ProviderStatus::unreachable);
    sources[ProviderID::codex]->answer(ProviderStatus::rateLimited); // may be asked later
    settle();
    time.jump(Seconds{6});
    clock->advance();
    view->refresh();
    settle();
    EXPECT_EQ(view->footer()->state().updated, "Claude: tried just now · again in 24 s");
    time.jump(FooterView::noteTime);
    clock->advance();
    settle();
    EXPECT_EQ(view->footer()->state().updated, "Updated just now");
}

TEST_F(PopoverViewTest, KeepsItsTab) {
    start();
    QSignalSpy changes(&*view, &PopoverView::tabChanged);
    view->setTab(2);
    EXPECT_EQ(preferences->popoverTab.peek(), PopoverTab::models);
    view->setTab(3);
    view->setTab(-1);
    EXPECT_EQ(view->tab(), 2);
    preferences->popoverTab = PopoverTab::stats;
    EXPECT_EQ(view->tab(), 1);
    EXPECT_EQ(changes.count(), 2);
}

} // namespace
} // namespace tokwatch

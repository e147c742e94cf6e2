#include "PopoverView.h"
#include "Scene.h"

namespace tokwatch::testing {
namespace {

const QUrl popover(QStringLiteral("qrc:/qt/qml/Tokwatch/Popover/Popover.qml"));

Scene scene(QString name, PopoverTab tab, std::function<void(DemoWorld&)> prepare,
            DemoWorld::Home home = DemoWorld::Home::demo) {
    return {
        std::move(name),
        popover,
        home,
        [tab, prepare = std::move(prepare)](DemoWorld& world) {
            world.preferences->popoverTab = tab;
            if (prepare) prepare(world);
        },
        [](DemoWorld& world) { return std::make_unique<PopoverView>(*world.model, world.clock); },
        {}};
}

void usual(DemoWorld& world) {
    world.showUsualLimits();
}

void inTokens(DemoWorld& world) {
    usual(world);
    world.preferences->summaryUnit = SummaryUnit::tokens;
}

/// Claude is about to run out, Codex low.
void critical(DemoWorld& world) {
    ProviderLimits claude = world.claudeLimits();
    claude.windows[0].usedFraction = 0.95;
    claude.windows[1].usedFraction = 0.88;
    world.model->apply(claude, ProviderID::claude);
    ProviderLimits codex = world.codexLimits();
    codex.windows[0].usedFraction = 0.79;
    world.model->apply(codex, ProviderID::codex);
}

/// Both services failed after they had answered once.
void stale(DemoWorld& world) {
    ProviderLimits claude = world.claudeLimits();
    claude.fetchedAt -= Seconds{7 * 3600};
    claude = claude.markedStale();
    claude.status = ProviderStatus::unreachable;
    world.model->apply(claude, ProviderID::claude);
    ProviderLimits codex = world.codexLimits();
    codex.fetchedAt -= Seconds{40 * 60};
    codex = codex.markedStale();
    codex.status = ProviderStatus::rateLimited;
    world.model->apply(codex, ProviderID::codex);
}

void statuses(DemoWorld& world, ProviderStatus claude, ProviderStatus codex) {
    ProviderLimits limits;
    limits.fetchedAt = world.time.now();
    limits.status = claude;
    world.model->apply(limits, ProviderID::claude);
    limits.status = codex;
    world.model->apply(limits, ProviderID::codex);
}

void signIn(DemoWorld& world) {
    statuses(world, ProviderStatus::signInNeeded, ProviderStatus::unavailable);
}

void denied(DemoWorld& world) {
    world.preferences->claudeLiveLimits = false;
    world.settle();
    statuses(world, ProviderStatus::unavailable, ProviderStatus::accessDenied);
}

void indexing(DemoWorld& world) {
    usual(world);
    world.model->refresh();
    world.settle();
    world.indexer.report({ProviderID::claude, 812'000'000, 2'400'000'000});
}

} // namespace

std::vector<Scene> popoverScenes() {
    using enum PopoverTab;
    return {
        scene("usage", PopoverTab::usage, usual),
        scene("usage-tokens", PopoverTab::usage, inTokens),
        scene("usage-critical", PopoverTab::usage, critical),
        scene("usage-stale", PopoverTab::usage, stale),
        scene("usage-sign-in", PopoverTab::usage, signIn),
        scene("usage-denied", PopoverTab::usage, denied),
        scene("usage-indexing", PopoverTab::usage, indexing),
        scene("usage-empty", PopoverTab::usage, {}, DemoWorld::Home::empty),
        scene("stats", stats, usual),
        scene("stats-tokens", stats, inTokens),
        scene("stats-empty", stats, {}, DemoWorld::Home::empty),
        scene("models", models, usual),
        scene("models-empty", models, {}, DemoWorld::Home::empty),
    };
}

} // namespace tokwatch::testing

#include "Tokwatch/Views/Popover/PopoverView.h"
#include "gallery/Scene.h"

#include <QQuickItem>

#include <algorithm>
#include <cmath>

namespace tokwatch::testing {
namespace {

const QUrl popover(QStringLiteral("qrc:/qt/qml/Tokwatch/Popover/Popover.qml"));

Scene scene(QString name, PopoverTab tab, std::function<void(DemoWorld&)> prepare,
            DemoWorld::Home home = DemoWorld::Home::demo) {
    return {std::move(name),
            popover,
            home,
            [tab, prepare = std::move(prepare)](DemoWorld& world) {
                world.preferences->popoverTab = tab;
                if (prepare) prepare(world);
            },
            [](DemoWorld& world) {
                return std::make_unique<PopoverView>(*world.model, world.clock, world.range);
            },
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

/// Both services failed after they had answered once; Claude was tried again a moment ago.
void stale(DemoWorld& world) {
    ProviderLimits claude = world.claudeLimits();
    claude.windows[0].usedFraction = 0.95;
    claude.windows[1].usedFraction = 0.88;
    claude.fetchedAt -= Seconds{7 * 3600};
    claude = claude.markedStale();
    claude.status = ProviderStatus::unreachable;
    world.model->apply(claude, ProviderID::claude);
    ProviderLimits codex = world.codexLimits();
    codex.fetchedAt -= Seconds{10 * 60};
    codex = codex.markedStale();
    codex.status = ProviderStatus::rateLimited;
    codex.windows[1].resetsAt = world.time.now() - Seconds{60};
    world.model->apply(codex, ProviderID::codex);
    const Date now = world.time.now();
    const auto& tell = world.limitsService->onAttempt;
    tell(ProviderID::claude, {now - Seconds{6}, now + Seconds{24}, now + Seconds{600}, false});
    tell(ProviderID::codex, {now - Seconds{60}, now, now + Seconds{1200}, false});
}

void statuses(DemoWorld& world, ProviderStatus claude, ProviderStatus codex) {
    ProviderLimits limits;
    limits.fetchedAt = world.time.now();
    for (const auto& [provider, status] :
         {std::pair{ProviderID::claude, claude}, {ProviderID::codex, codex}}) {
        limits.status = status;
        world.model->apply(limits, provider);
        world.limitsService->onAttempt(provider, {});
    }
}

void signIn(DemoWorld& world) {
    statuses(world, ProviderStatus::signInNeeded, ProviderStatus::unavailable);
}

void denied(DemoWorld& world) {
    world.preferences->claudeLiveLimits = false;
    world.settle();
    statuses(world, ProviderStatus::unavailable, ProviderStatus::accessDenied);
}

/// More and longer than anybody has: it may be shortened, but nothing may overlap.
void extreme(DemoWorld& world) {
    ProviderLimits claude = world.claudeLimits();
    claude.plan = "Enterprise Premium with Extended Context";
    for (const char* name :
         {"Weekly Sonnet", "Weekly Haiku and everything else that is small", "Monthly"})
        claude.windows.push_back(
            world.window(name, name, 0.999, Seconds{2'592'000}, Seconds{2'000'000}));
    claude.credits = Credits{"Extra usage beyond what the plan includes", std::nullopt, 123'456.78,
                             250'000, false};
    world.model->apply(claude.markedStale(), ProviderID::claude);
    ProviderLimits codex;
    codex.plan = "Pay as you go";
    codex.credits = Credits{"Credits", 123'456.78, std::nullopt, std::nullopt, false};
    codex.fetchedAt = world.time.now();
    world.model->apply(codex, ProviderID::codex);
    UsageEvent event;
    event.model = "an-internal-preview-model-with-a-name-that-nobody-can-remember-20260312";
    event.dedupKey = "extreme";
    event.sessionID = event.dedupKey;
    event.timestamp = world.time.now();
    event.tokens.cacheRead = 12'300'000'000;
    event.reportedCostUSD = 123'456.78;
    world.store->ingest(std::vector{event}, Calendar::utc());
    world.model->publish();
}

void indexing(DemoWorld& world) {
    usual(world);
    world.model->refresh();
    world.settle();
    world.indexer.report({ProviderID::claude, 812'000'000, 2'400'000'000});
}

/// Shows the tooltip of this text, which otherwise waits for the pointer and a moment.
bool showTip(const QQuickItem& below, const QString& beginning) {
    return std::ranges::any_of(below.childItems(), [&](QQuickItem* item) {
        const bool isTip = item->property("wanted").isValid();
        if (!isTip || !item->property("text").toString().startsWith(beginning))
            return showTip(*item, beginning);
        item->setProperty("active", true);
        item->property("item").value<QObject*>()->setProperty("delay", 0);
        return item->setProperty("wanted", true);
    });
}

/// Claude's session and its Opus limit are on their way to run out before they reset.
void runningOut(DemoWorld& world) {
    ProviderLimits claude = world.claudeLimits();
    const double used[]{0.64, 0.58, 0.8};
    const double elapsedHours[]{2.9, 115, 115};
    const double resetHours[]{2.1, 53, 53};
    constexpr int observations = 24;
    for (int i = 0; i <= observations; ++i) {
        const double time = static_cast<double>(i) / observations;
        for (std::size_t at = 0; at < claude.windows.size(); ++at) {
            LimitWindow& window = claude.windows[at];
            window.resetsAt = world.time.now() + Seconds{resetHours[at] * 3600};
            // Work and pauses, five times.
            const double phase = time * 5 - std::floor(time * 5);
            const double part = (std::floor(time * 5) + std::min(phase * 2, 1.0)) / 5;
            window.usedFraction = std::floor(used[at] * part * 100) / 100;
            const Date moment = world.time.now() - Seconds{elapsedHours[at] * 3600 * (1 - time)};
            window.source = i < observations ? LimitSource::local(moment) : LimitSource::live();
        }
        world.history->record(claude, ProviderID::claude);
    }
    world.model->apply(claude, ProviderID::claude);
    world.model->apply(world.codexLimits(), ProviderID::codex);
}

/// All limits that can be opened are.
void openLimits(const QQuickItem& below) {
    for (QQuickItem* item : below.childItems()) {
        if (item->property("opens").toBool()) item->setProperty("isOpen", true);
        openLimits(*item);
    }
}

Scene openedLimits() {
    Scene opened = scene("usage-forecast", PopoverTab::usage, runningOut);
    opened.touch = [](const QQuickItem& root) { openLimits(root); };
    opened.size = {420, 696};
    return opened;
}

/// What the time mark and the pace of a limit say to the pointer.
Scene tips() {
    Scene tips = scene("usage-tips", PopoverTab::usage, usual);
    tips.touch = [](const QQuickItem& root) {
        showTip(root, "This mark is time");
        showTip(root, "58% used");
    };
    tips.size = {420, 340};
    return tips;
}

/// The models' tab in other parts than models.
Scene breakdown(const char* name, Segment::Breakdown mode,
                const std::function<void(DemoWorld&)>& prepare) {
    Scene breakdown = scene(name, PopoverTab::models, prepare);
    breakdown.makeView = [mode](DemoWorld& world) {
        auto view = std::make_unique<PopoverView>(*world.model, world.clock, world.range);
        view->models()->setMode(mode);
        return view;
    };
    breakdown.size = {420, 516};
    return breakdown;
}

/// The small panel that stays above other windows.
Scene pinnedLimits() {
    return {QStringLiteral("pinned"),
            QUrl(QStringLiteral("qrc:/qt/qml/Tokwatch/Popover/Usage/LimitsPanel.qml")),
            DemoWorld::Home::demo,
            usual,
            [](DemoWorld& world) { return std::make_unique<UsageView>(*world.model, world.clock); },
            {},
            {232, 0}};
}

void today(DemoWorld& world) {
    usual(world);
    world.range.setDays(ShownRange::Today);
}

void ninetyDays(DemoWorld& world) {
    usual(world);
    world.range.setDays(ShownRange::Quarter);
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
        scene("usage-extreme", PopoverTab::usage, extreme),
        tips(),
        scene("usage-running-out", PopoverTab::usage, runningOut),
        openedLimits(),
        pinnedLimits(),
        scene("usage-empty", PopoverTab::usage, {}, DemoWorld::Home::empty),
        scene("stats", stats, usual),
        scene("stats-tokens", stats, inTokens),
        scene("stats-today", stats, today),
        scene("stats-90-days", stats, ninetyDays),
        scene("stats-empty", stats, {}, DemoWorld::Home::empty),
        scene("models", models, usual),
        scene("models-extreme", models, extreme),
        breakdown("models-days", Segment::ByDay, usual),
        breakdown("models-projects", Segment::ByProject, ninetyDays),
        scene("models-empty", models, {}, DemoWorld::Home::empty),
    };
}

} // namespace tokwatch::testing

#include "Tokwatch/Views/Popover/Stats/StatsView.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Display/SummaryDisplay.h"
#include "Tokwatch/Display/SummaryTexts.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Common/Text.h"

namespace tokwatch {

StatsView::StatsView(AppModel& appModel, const ViewClock&) : model(appModel) {
    connect(&reading, &QFutureWatcher<UsageSummary>::finished, this, &StatsView::takeStoredDays);
}

StatsView::Updates::Updates(StatsView& view)
    : state([&view] { return view.computeState(); },
            [&view](StatsState next) { view.currentState = std::move(next); }),
      calendar([&view] { return view.computeCalendar(); },
               [&view](HeatMapDays next) { view.currentCalendar = std::move(next); }),
      publishing(view.model.bindableLastUpdated().addNotifier([&view] { view.readStoredDays(); })) {
}

void StatsView::setActive(bool active) {
    if (active == isActive()) return;
    if (active) {
        updates.emplace(*this);
        updates->state.arm();
        updates->calendar.arm();
        readStoredDays();
    } else {
        updates.reset();
    }
}

StatsState StatsView::computeState() const {
    const UsageSummary& summary = model.summary();
    const SummaryUnit unit = model.preferences().summaryUnit;
    StatsState state;
    if (summary.tools.empty()) {
        state.emptyText = text(SummaryTexts::noUsage(AppModel::readingDays));
        return state;
    }
    const SummaryDisplay::TokenStatistics tokens = SummaryDisplay::tokenStatistics(summary);
    state.tiles = {text(tokens.processed), text(tokens.cachedInput), text(tokens.uncachedInput),
                   text(tokens.output), text(tokens.cacheSavings)};
    state.chart = ChartDays::of(summary, unit, model.calendar());
    return state;
}

HeatMapDays StatsView::computeCalendar() const {
    const SummaryUnit unit = model.preferences().summaryUnit;
    const UsageSummary& stored = storedDays.value();
    if (stored.days == AppModel::keptDays) return HeatMapDays::of(stored, unit, model.calendar());
    // Not known yet: the days without their usage hold the place.
    UsageSummary nothing;
    nothing.days = AppModel::keptDays;
    nothing.windowEnd = model.summary().windowEnd;
    return HeatMapDays::of(nothing, unit, model.calendar());
}

void StatsView::readStoredDays() {
    isOutdated = reading.isRunning();
    // A watcher and no continuation: those assert that whom they tell is still there.
    if (!isOutdated) reading.setFuture(model.summaryOf(AppModel::keptDays));
}

void StatsView::takeStoredDays() {
    if (reading.future().resultCount() == 0) return; // the program ends
    const UsageSummary summary = reading.result();
    // A summary of no days stands for one that could not be computed.
    if (summary.days == AppModel::keptDays) storedDays.setValue(summary);
    if (isOutdated && isActive()) readStoredDays();
}

} // namespace tokwatch

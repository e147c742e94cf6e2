#include "Tokwatch/Views/Popover/Stats/StatsView.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Display/SummaryDisplay.h"
#include "Tokwatch/Display/SummaryTexts.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Store/Pruning.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPainter>

namespace tokwatch {

StatsView::StatsView(AppModel& appModel, ShownRange& range, FollowedSummary& rangeSummary)
    : model(appModel), shownRange(range), summary(rangeSummary), stored(model, keptDays) {}

StatsView::Updates::Updates(StatsView& view)
    : lookAtSummary(view.summary), lookAtStored(view.stored),
      state([&view] { return view.computeState(); },
            [&view](StatsState next) { view.currentState = std::move(next); }),
      calendar([&view] { return view.computeCalendar(); },
               [&view](HeatMapDays next) { view.currentCalendar = std::move(next); }),
      reading([&view] { return view.summary.reading(); },
              [&view](ReadingState next) { view.currentReading = std::move(next); }) {}

void StatsView::setActive(bool active) {
    if (active == isActive()) return;
    if (active) {
        updates.emplace(*this);
        updates->state.arm();
        updates->calendar.arm();
        updates->reading.arm();
    } else {
        updates.reset();
    }
}

void StatsView::copyPicture(const QImage& picture, const QColor& background) {
    if (picture.isNull()) return;
    const int margin = picture.width() / 24; // as beside the cards
    QImage framed(picture.size() + 2 * QSize(margin, margin), QImage::Format_RGB32);
    framed.fill(background);
    QPainter(&framed).drawImage(margin, margin, picture);
    QGuiApplication::clipboard()->setImage(framed);
}

StatsState StatsView::computeState() const {
    const UsageSummary& chosen = summary.value();
    StatsState state;
    state.hasCalendar = !chosen.tools.empty() || !stored.value().tools.empty();
    if (chosen.tools.empty()) {
        state.emptyText = text(SummaryTexts::noUsage(shownRange.days()));
        return state;
    }
    const SummaryDisplay::TokenStatistics tokens = SummaryDisplay::tokenStatistics(chosen);
    state.tiles = {text(tokens.processed), text(tokens.cachedInput), text(tokens.uncachedInput),
                   text(tokens.output), text(tokens.cacheSavings)};
    state.chart = ChartDays::of(chosen, model.preferences().summaryUnit, model.calendar());
    return state;
}

HeatMapDays StatsView::computeCalendar() const {
    const SummaryUnit unit = model.preferences().summaryUnit;
    const UsageSummary& known = stored.value();
    if (known.days == keptDays) return HeatMapDays::of(known, unit, model.calendar());
    // Not known yet: the days without their usage hold the place.
    UsageSummary nothing;
    nothing.days = keptDays;
    nothing.windowEnd = known.windowEnd;
    return HeatMapDays::of(nothing, unit, model.calendar());
}

} // namespace tokwatch

#include "moc_StatsView.cpp"

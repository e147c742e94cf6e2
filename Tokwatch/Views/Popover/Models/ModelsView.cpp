#include "Tokwatch/Views/Popover/Models/ModelsView.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Display/SummaryDisplay.h"
#include "Tokwatch/Display/SummaryTexts.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Presentation/MeterFormat.h"
#include "TokwatchCore/Support/Amounts.h"

#include <QClipboard>
#include <QGuiApplication>

#include <utility>

namespace tokwatch {
namespace {

/// What the projects' numbers leave out or guess. Assistants delete old files, whose sums are kept.
std::string notesOf(const ProjectUsage& usage, const UsageSummary& stored) {
    std::string notes = SummaryDisplay::notes(usage.hasUnknownPrices, usage.hasApproximateCosts);
    const auto add = [&notes](const std::string& line) {
        notes.append(notes.empty() ? "" : "\n").append(line);
    };
    // Less may be on its way to the store, or out of it.
    constexpr double worthSaying = 0.99;
    const std::int64_t all = stored.tokens.total();
    if (stored.days == usage.days &&
        static_cast<double>(usage.tokens) < worthSaying * static_cast<double>(all))
        add("Counts the files that are still there: " + MeterFormat::tokens(usage.tokens) + " of " +
            MeterFormat::tokens(all) + " tokens");
    if (usage.unread > 0) add(counted(usage.unread, "file") + " could not be read");
    return notes;
}

} // namespace

ModelsView::ModelsView(AppModel& appModel, ShownRange& range, FollowedSummary& rangeSummary)
    : model(appModel), shownRange(range), summary(rangeSummary), projects(model),
      rangeNotifier(range.bindableDays().addNotifier([this] { followProjects(); })) {}

ModelsView::Updates::Updates(ModelsView& view)
    : look(view.summary), shown([&view] { return view.compute(); },
                                [&view](Shown next) { view.show(std::move(next)); }),
      reading(
          [&view] {
              return view.mode() == Segment::ByProject ? view.projects.reading()
                                                       : view.summary.reading();
          },
          [&view](ReadingState next) { view.currentReading = std::move(next); }) {}

void ModelsView::setActive(bool active) {
    if (active == isActive()) return;
    if (active) {
        updates.emplace(*this);
        updates->shown.arm();
        updates->reading.arm();
    } else {
        updates.reset();
    }
    followProjects();
}

void ModelsView::setInSight(bool isInSight) {
    inSight = isInSight;
    followProjects();
}

void ModelsView::setMode(Segment::Breakdown mode) {
    breakdownMode = mode;
    followProjects();
}

void ModelsView::show(Shown next) {
    // That rows are waited for is known before they go and until they are there, so that nothing is
    // laid out for none.
    if (next.state.isWaiting) currentState = next.state;
    rowModel.assign(std::move(next.breakdown));
    currentState = std::move(next.state);
}

void ModelsView::followProjects() {
    const bool areWanted = isActive() && inSight && mode() == Segment::ByProject;
    projects.follow(areWanted ? std::optional<int>(shownRange.days()) : std::nullopt);
}

BreakdownPointer ModelsView::breakdown() const {
    const SummaryUnit unit = model.preferences().summaryUnit;
    switch (mode()) {
    case Segment::ByModel:
        return breakdownByModel(summary.value(), unit);
    case Segment::ByDay:
        return breakdownByDay(summary.value(), unit, model.calendar());
    case Segment::ByProject:
        return breakdownByProject(projects.usage().value_or(ProjectUsage()), unit);
    }
    return nullptr;
}

ModelsView::Shown ModelsView::compute() const {
    if (mode() == Segment::ByProject) return computeProjects();
    Shown shown;
    const UsageSummary& stored = summary.value();
    if (stored.tools.empty()) {
        shown.state.emptyText = text(SummaryTexts::noUsage(shownRange.days()));
        return shown;
    }
    shown.breakdown = breakdown();
    shown.state.notes = text(SummaryDisplay::notes(stored));
    return shown;
}

ModelsView::Shown ModelsView::computeProjects() const {
    Shown shown;
    const std::optional<ProjectUsage>& usage = projects.usage();
    if (!usage) {
        shown.state.isWaiting = true;
        return shown;
    }
    if (usage->rows.empty()) {
        shown.state.emptyText = text(SummaryTexts::noUsage(usage->days));
        return shown;
    }
    shown.breakdown = breakdown();
    shown.state.notes = text(notesOf(*usage, summary.value()));
    return shown;
}

QString ModelsView::asText() const {
    return breakdown()->table().aligned();
}

QString ModelsView::asCSV() const {
    return breakdown()->data().csv();
}

void ModelsView::copyText() const {
    QGuiApplication::clipboard()->setText(asText());
}

void ModelsView::copyCSV() const {
    QGuiApplication::clipboard()->setText(asCSV());
}

} // namespace tokwatch

#include "moc_ModelsView.cpp"

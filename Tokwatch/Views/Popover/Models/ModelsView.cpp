#include "Tokwatch/Views/Popover/Models/ModelsView.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Display/SummaryDisplay.h"
#include "Tokwatch/Display/SummaryTexts.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Common/Text.h"

#include <QClipboard>
#include <QGuiApplication>

#include <utility>

namespace tokwatch {

ModelsView::ModelsView(AppModel& appModel, const ViewClock&) : model(appModel) {}

void ModelsView::setActive(bool active) {
    if (active == isActive()) return;
    if (active) {
        updater.emplace([this] { return compute(); },
                        [this](State next) {
                            rowModel.assign(std::move(next.breakdown));
                            texts = std::move(next.texts);
                        });
        updater->arm();
    } else {
        updater.reset();
    }
}

Breakdown ModelsView::breakdown() const {
    return {model.summary(), breakdownMode.value(), model.preferences().summaryUnit,
            model.calendar()};
}

ModelsView::State ModelsView::compute() const {
    const UsageSummary& summary = model.summary();
    State state;
    if (summary.tools.empty()) {
        state.texts.emptyText = text(SummaryTexts::noUsage(AppModel::readingDays));
        return state;
    }
    state.breakdown = breakdown();
    state.texts.notes = text(SummaryDisplay::notes(summary));
    return state;
}

QString ModelsView::asText() const {
    return breakdown().table().aligned();
}

QString ModelsView::asCSV() const {
    return breakdown().data().csv();
}

void ModelsView::copyText() const {
    QGuiApplication::clipboard()->setText(asText());
}

void ModelsView::copyCSV() const {
    QGuiApplication::clipboard()->setText(asCSV());
}

} // namespace tokwatch

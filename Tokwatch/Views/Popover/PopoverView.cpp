#include "Tokwatch/Views/Popover/PopoverView.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Display/PlainSummary.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Common/Text.h"

#include <QClipboard>
#include <QGuiApplication>

namespace tokwatch {

PopoverView::PopoverView(AppModel& appModel, ViewClock& clock, ShownRange& range)
    : model(appModel), usageView(model, clock), rangeSummary(model, range.days()),
      statsView(model, range, rangeSummary), modelsView(model, range, rangeSummary),
      footerView(model, clock),
      tabNotifier(model.preferences().popoverTab.addNotifier([this] { emit tabChanged(); })),
      rangeNotifier(range.bindableDays().addNotifier(
          [this, &range] { rangeSummary.setDays(range.days()); })) {
    connect(&modelsView, &ModelsView::pasteRequested, this, &PopoverView::pasteRequested);
}

Segment::Tab PopoverView::tab() const {
    return static_cast<Segment::Tab>(model.preferences().popoverTab.peek());
}

void PopoverView::setTab(Segment::Tab tab) {
    model.preferences().popoverTab = static_cast<PopoverTab>(tab);
}

QString PopoverView::summary() const {
    const Preferences& preferences = model.preferences();
    const StatusContent content = statusContent(preferences.plain(), model.limits(), model.now());
    return text(plainSummary(model.summary(), content.steps, preferences.summaryUnit));
}

void PopoverView::copySummary() const {
    QGuiApplication::clipboard()->setText(summary());
}

void PopoverView::refresh() {
    model.refresh();
    footerView.refreshAsked();
}

} // namespace tokwatch

#include "moc_PopoverView.cpp"

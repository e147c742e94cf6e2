#include "Tokwatch/Views/Popover/PopoverView.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Preferences/Preferences.h"

namespace tokwatch {

PopoverView::PopoverView(AppModel& appModel, const ViewClock& clock, ShownRange& range)
    : model(appModel), usageView(model, clock), rangeSummary(model, range.days()),
      statsView(model, range, rangeSummary), modelsView(model, range, rangeSummary),
      footerView(model, clock),
      tabNotifier(model.preferences().popoverTab.addNotifier([this] { emit tabChanged(); })),
      rangeNotifier(range.bindableDays().addNotifier(
          [this, &range] { rangeSummary.setDays(range.days()); })) {}

Segment::Tab PopoverView::tab() const {
    return static_cast<Segment::Tab>(model.preferences().popoverTab.peek());
}

void PopoverView::setTab(Segment::Tab tab) {
    model.preferences().popoverTab = static_cast<PopoverTab>(tab);
}

void PopoverView::refresh() {
    model.refresh();
    footerView.refreshAsked();
}

} // namespace tokwatch

#include "moc_PopoverView.cpp"

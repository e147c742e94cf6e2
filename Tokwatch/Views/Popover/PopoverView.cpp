#include "Tokwatch/Views/Popover/PopoverView.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Preferences/Preferences.h"

namespace tokwatch {

PopoverView::PopoverView(AppModel& appModel, const ViewClock& clock)
    : model(appModel), usageView(model, clock), statsView(model, clock), modelsView(model, clock),
      footerView(model, clock),
      tabNotifier(model.preferences().popoverTab.addNotifier([this] { emit tabChanged(); })) {}

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

#include "Tokwatch/Views/Popover/PopoverView.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/Preferences/Preferences.h"

namespace tokwatch {

PopoverView::PopoverView(AppModel& appModel, const ViewClock& clock)
    : model(appModel), usageView(model, clock), statsView(model, clock), modelsView(model, clock),
      footerView(model, clock),
      tabNotifier(model.preferences().popoverTab.addNotifier([this] { emit tabChanged(); })) {}

int PopoverView::tab() const {
    return static_cast<int>(model.preferences().popoverTab.peek());
}

void PopoverView::setTab(int tab) {
    if (tab < static_cast<int>(PopoverTab::usage) || tab > static_cast<int>(PopoverTab::models))
        return;
    model.preferences().popoverTab = static_cast<PopoverTab>(tab);
}

void PopoverView::refresh() {
    model.refresh();
    footerView.refreshAsked();
}

} // namespace tokwatch

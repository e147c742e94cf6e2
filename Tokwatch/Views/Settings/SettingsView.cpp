#include "Tokwatch/Views/Settings/SettingsView.h"

namespace tokwatch {

SettingsView::SettingsView(AppModel& model, const ViewClock& clock, const SettingsPlaces& places)
    : generalView(model, clock, places), menuBarView(model, clock),
      providersView(model, clock, places) {}

void SettingsView::setPage(int page) {
    const auto wanted = static_cast<Page>(page);
    if (wanted >= Page::general && wanted <= Page::about) shown = wanted;
}

} // namespace tokwatch

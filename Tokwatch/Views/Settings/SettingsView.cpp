#include "Tokwatch/Views/Settings/SettingsView.h"

namespace tokwatch {

SettingsView::SettingsView(AppModel& model, const ViewClock& clock, const SettingsPlaces& places)
    : generalView(model, clock, places), menuBarView(model, clock),
      providersView(model, clock, places) {}

} // namespace tokwatch

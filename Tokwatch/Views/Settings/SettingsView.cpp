#include "Tokwatch/Views/Settings/SettingsView.h"

#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Limits/UsageHosts.h"
#include "TokwatchCore/Support/ApplicationVersion.h"

namespace tokwatch {

SettingsView::SettingsView(AppModel& model, const ViewClock& clock, const SettingsPlaces& places)
    : generalView(model, clock, places), menuBarView(model, clock),
      providersView(model, clock, places) {}

QString SettingsView::claudeHost() {
    return text(tokwatch::claudeHost);
}

QString SettingsView::codexHost() {
    return text(tokwatch::codexHost);
}

QString SettingsView::version() {
    return text(applicationVersion());
}

} // namespace tokwatch

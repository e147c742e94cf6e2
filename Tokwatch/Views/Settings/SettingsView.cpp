#include "Tokwatch/Views/Settings/SettingsView.h"

#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Limits/UsageServers.h"
#include "TokwatchCore/Support/ApplicationVersion.h"

namespace tokwatch {

SettingsView::SettingsView(AppModel& model, const ViewClock& clock, const SettingsPlaces& places)
    : generalView(model, clock, places),
      hotKeyView(places.desktop, places.hotKey, places.openCommand), menuBarView(model, clock),
      alertsView(places.alerts), widgetView(places.widget), providersView(model, clock, places),
      updatesView(makeUpdatesView(model, clock, places)) {}

QString SettingsView::claudeServer() {
    return text(tokwatch::claudeServer);
}

QString SettingsView::codexServer() {
    return text(tokwatch::codexServer);
}

QString SettingsView::version() {
    return text(applicationVersion());
}

} // namespace tokwatch

#include "moc_SettingsView.cpp"

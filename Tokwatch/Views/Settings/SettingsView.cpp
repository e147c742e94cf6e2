#include "Tokwatch/Views/Settings/SettingsView.h"

#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/DesktopPreferences/DesktopPreferences.h"
#include "Tokwatch/Preferences/AlertPreferences.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Preferences/WidgetPreferences.h"
#include "Tokwatch/Views/Common/Text.h"
#include "TokwatchCore/Limits/UsageServers.h"
#include "TokwatchCore/Support/ApplicationVersion.h"

namespace tokwatch {
namespace {

QString unsavedText(AppModel& model, const SettingsPlaces& places) {
    const std::initializer_list<const SettingsGroup*> files{&model.preferences(), &places.alerts,
                                                            &places.desktop, &places.widget};
    for (const SettingsGroup* file : files)
        if (const std::string& reason = file->unsaved().value(); !reason.empty())
            return text("Changes cannot be saved: " + reason);
    return {};
}

} // namespace

SettingsView::SettingsView(AppModel& model, const ViewClock& clock, const SettingsPlaces& places)
    : generalView(model, clock, places),
      hotKeyView(places.desktop, places.hotKey, places.openCommand), menuBarView(model, clock),
      alertsView(places.alerts), widgetView(places.widget), providersView(model, clock, places),
      updatesView(makeUpdatesView(model, clock, places)),
      warningUpdater([&model, places] { return unsavedText(model, places); },
                     [this](QString next) { warning = std::move(next); }) {
    warningUpdater.arm();
}

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

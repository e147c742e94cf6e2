#include "Tokwatch/Views/Settings/GeneralView.h"

#include "KivoLaunch/LoginItem.h"
#include "Tokwatch/App/AppModel.h"
#include "Tokwatch/DesktopPreferences/DesktopPreferences.h"
#include "Tokwatch/Display/HomeRelative.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Views/Common/Text.h"
#include "Tokwatch/Views/Common/ViewClock.h"

#include <QFile>

namespace tokwatch {
namespace {

QUrl directoryOf(const std::filesystem::path& file) {
    return QUrl::fromLocalFile(QFile::decodeName(file.parent_path().c_str()));
}

} // namespace

GeneralView::GeneralView(AppModel& appModel, const ViewClock& clock, const SettingsPlaces& where)
    : model(appModel), places(where),
      updater([this, &clock] { return computed(clock); },
              [this](GeneralState next) { current = std::move(next); }) {
    updater.arm();
}

GeneralState GeneralView::computed(const ViewClock& clock) const {
    const Preferences& preferences = model.preferences();
    const std::string& home = model.locations().home.native();
    GeneralState state;
    // Other programs write the entry as well, so it is looked at again whenever the clock is.
    (void)clock.now();
    state.unwritable = unwritable.value();
    state.startsAtLogin = places.loginItem.isEnabled();
    state.showDockIcon = preferences.showDockIcon;
    state.theme = static_cast<WindowTone::Value>(places.desktop.theme.value());
    state.unit = static_cast<Segment::Unit>(preferences.summaryUnit.value());
    if (places.database) state.dataPlace = text(homeRelative(places.database->native(), home));
    state.settingsPlace = text(homeRelative(places.settingsFile.native(), home));
    return state;
}

void GeneralView::setStartsAtLogin(bool starts) {
    const bool isDone = places.loginItem.setEnabled(starts);
    unwritable =
        isDone
            ? QString()
            : text(homeRelative(places.loginItem.file().native(), model.locations().home.native()));
    GeneralState next = current;
    next.startsAtLogin = places.loginItem.isEnabled();
    current.setValueBypassingBindings(next);
    // Also when nothing changed: then the switch, which moved already, has to move back.
    emit stateChanged();
}

void GeneralView::setShowDockIcon(bool shows) {
    model.preferences().showDockIcon = shows;
}

void GeneralView::setTheme(WindowTone::Value tone) {
    places.desktop.theme = static_cast<kivo::ToneChoice>(tone);
}

void GeneralView::setUnit(Segment::Unit unit) {
    model.preferences().summaryUnit = static_cast<SummaryUnit>(unit);
}

void GeneralView::showData() {
    if (places.database) places.open(directoryOf(*places.database));
}

void GeneralView::showSettingsFile() {
    places.open(directoryOf(places.settingsFile));
}

} // namespace tokwatch

#include "moc_GeneralView.cpp"

#include "Tokwatch/Views/Settings/AlertsView.h"

#include "Tokwatch/Preferences/AlertPreferences.h"
#include "Tokwatch/Views/Common/Text.h"
#include "Tokwatch/Views/Settings/NamedChoice.h"

#include <set>

namespace tokwatch {
namespace {

QVariantList timeChoices(std::set<TimeOfDay> times) {
    for (int hour = 0; hour < 24; ++hour)
        times.insert(TimeOfDay{60 * hour});
    QVariantList choices;
    for (const TimeOfDay time : times)
        choices.append(QVariant::fromValue(NamedChoice{text(textOf(time)), text(textOf(time))}));
    return choices;
}

} // namespace

AlertsView::AlertsView(AlertPreferences& alertPreferences)
    : preferences(alertPreferences),
      updater([this] { return computed(); },
              [this](AlertsState next) { current = std::move(next); }) {
    updater.arm();
}

AlertsState AlertsView::computed() const {
    const TimeOfDay from = preferences.quietFrom;
    const TimeOfDay until = preferences.quietUntil;
    AlertsState state;
    for (const AlertKind kind : preferences.wanted())
        state.wanted.append(text(rawValue(kind)));
    state.quietHours = preferences.quietHours;
    state.quietFrom = text(textOf(from));
    state.quietUntil = text(textOf(until));
    state.times = timeChoices({from, until});
    return state;
}

void AlertsView::setWanted(const QString& kind, bool isWanted) {
    if (const auto known = caseNamed<AlertKind>(kind.toStdString()))
        preferences.of(*known) = isWanted;
}

void AlertsView::setQuietHours(bool areKept) {
    preferences.quietHours = areKept;
}

void AlertsView::setQuietFrom(const QString& time) {
    preferences.quietFrom.assignText(time.toStdString());
}

void AlertsView::setQuietUntil(const QString& time) {
    preferences.quietUntil.assignText(time.toStdString());
}

} // namespace tokwatch

#include "moc_AlertsView.cpp"

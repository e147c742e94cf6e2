#include "Tokwatch/Views/Settings/WidgetView.h"

#include "Tokwatch/Preferences/WidgetPreferences.h"

#include <QGuiApplication>

namespace tokwatch {
namespace {

/// Elsewhere than on Wayland it can be told without the widget.
QString placeOf(std::optional<bool> staysWhereDragged) {
    if (!QGuiApplication::platformName().startsWith(QLatin1String("wayland")) ||
        staysWhereDragged == true)
        return QStringLiteral(
            "It lies on the desktop, below all windows, and stays where it is dragged.");
    return staysWhereDragged ? QStringLiteral("Where it lies is the compositor's choice.")
                             : QString();
}

} // namespace

WidgetView::WidgetView(WidgetPreferences& widgetPreferences)
    : preferences(widgetPreferences),
      updater(
          [this] {
              return WidgetState{preferences.shown,
                                 static_cast<Segment::Size>(preferences.size.value()),
                                 placeOf(preferences.staysWhereDragged())};
          },
          [this](WidgetState next) { current = next; }) {
    updater.arm();
}

void WidgetView::setShown(bool isShown) {
    preferences.shown = isShown;
    WidgetState next = current;
    next.shown = preferences.shown.peek();
    current.setValueBypassingBindings(next);
    // Also when it could not be started: then the switch, which moved already, has to move back.
    emit stateChanged();
}

void WidgetView::setSize(Segment::Size size) {
    preferences.size = static_cast<WidgetSize>(size);
}

} // namespace tokwatch

#include "moc_WidgetView.cpp"

#include "Tokwatch/Views/Settings/WidgetView.h"

#include "Tokwatch/Preferences/WidgetPreferences.h"

namespace tokwatch {

WidgetView::WidgetView(WidgetPreferences& widgetPreferences)
    : preferences(widgetPreferences),
      updater(
          [this] {
              return WidgetState{preferences.shown,
                                 static_cast<Segment::Size>(preferences.size.value())};
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

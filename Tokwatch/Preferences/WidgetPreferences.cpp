#include "Tokwatch/Preferences/WidgetPreferences.h"

#include "Tokwatch/Preferences/PlainSettings.h"

namespace tokwatch {
namespace {

constexpr const char* framesKey = "frames";

} // namespace

WidgetPreferences::WidgetPreferences(QSettings& settings)
    : SettingsGroup(settings), shown(list, "shown", "a widget on the desktop", false),
      size(list, "size", "how large the widget is", WidgetSize::medium) {
    tellFaults();
}

std::string WidgetPreferences::frames() const {
    return storedText(list.storage, framesKey).value_or("");
}

void WidgetPreferences::setFrames(std::string_view text) {
    if (storageIsSound(list.storage)) storeText(list.storage, framesKey, text);
}

std::filesystem::path widgetSettingsPath() {
    return settingsPath().parent_path() / "Widget.conf";
}

} // namespace tokwatch

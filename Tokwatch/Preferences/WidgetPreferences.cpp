#include "Tokwatch/Preferences/WidgetPreferences.h"

#include "Tokwatch/Preferences/PlainSettings.h"

#include <array>
#include <sstream>
#include <utility>

namespace tokwatch {
namespace {

constexpr const char* framesKey = "frames";
constexpr const char* staysKey = "staysWhereDragged";

/// Four numbers and a screen's name in each line: the windows' kit, which reads them, is not there
/// for commands.
bool areFrames(std::string_view text) {
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::array<int, 4> numbers{};
        for (int& number : numbers)
            if (!(words >> number)) return false;
    }
    return true;
}

} // namespace

WidgetPreferences::WidgetPreferences(std::unique_ptr<SettingsStorage> settings)
    : SettingsGroup(std::move(settings)), shown(list, "shown", "a widget on the desktop", false),
      size(list, "size", "how large the widget is", WidgetSize::medium) {
    list.kept = {{framesKey, "lines such as 20 40 232 140 HDMI-1", areFrames},
                 {staysKey, "true or false", isText<bool>}};
    tellFaults();
}

std::string WidgetPreferences::frames() const {
    return storedText(*list.storage, framesKey).value_or("");
}

void WidgetPreferences::setFrames(std::string_view text) {
    list.onStore();
    storeText(*list.storage, framesKey, text);
}

std::optional<bool> WidgetPreferences::staysWhereDragged() const {
    bool stays = false;
    if (!parseText(storedText(*list.storage, staysKey).value_or(""), stays)) return std::nullopt;
    return stays;
}

void WidgetPreferences::setStaysWhereDragged(bool stays) {
    if (staysWhereDragged() == stays) return;
    list.onStore();
    storeSetting(*list.storage, staysKey, stays);
}

std::filesystem::path widgetSettingsPath() {
    return settingsPath().parent_path() / "Widget.conf";
}

} // namespace tokwatch

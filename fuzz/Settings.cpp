#include "Tokwatch/Preferences/PlainSettings.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Preferences/SettingsFile.h"
#include "TokwatchCore/Support/PlainText.h"
#include "fuzz/Target.h"

#include <algorithm>
#include <string>

namespace tokwatch::fuzzing {
namespace {

bool holds(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

/// What the two may read differently: types of other programs, which the toolkit makes of such
/// values and the doctor names; a NUL in a key; a byte order mark amid a text; and a key that
/// stands in two sections, of which the toolkit takes the one that it happens to look at last.
bool isBeyondBoth(std::string_view text) {
    for (const std::string_view type : {"@Variant(", "@DateTime(", "@Rect(", "@Size(", "@Point("})
        if (holds(text, type)) return true;
    const std::size_t group = text.find("menuBarWindows");
    const bool isTwice = group != std::string_view::npos &&
                         (holds(text.substr(group + 1), "menuBarWindows") || holds(text, "%"));
    const bool hasLateMark = text.size() > 1 && holds(text.substr(1), "\xEF\xBB\xBF");
    return hasLateMark || holds(text, std::string_view("\0", 1)) || (isTwice && holds(text, "["));
}

bool isText(const WindowChoices::value_type& choice) {
    return validUTF8(choice.first) == choice.first && validUTF8(choice.second) == choice.second;
}

/// Both readers of the file find the same in it, however it is written.
void runSettings(std::string_view input) {
    // Each its own file: the toolkit remembers those that have been there.
    static std::size_t number = 0;
    const std::filesystem::path file = scratchFile("settings-" + std::to_string(++number));
    writeFile(file, input);
    settingsFaults(file);
    const PlainSettings plain = PlainSettings::read(file);
    const PlainSettings ofToolkit = Preferences(settingsFile(file)).plain();
    std::filesystem::remove(file);
    // What is no text the toolkit marks in a way of its own.
    if (!isBeyondBoth(input) && validUTF8(input) == input &&
        std::ranges::all_of(plain.menuBarWindows, isText))
        require(plain == ofToolkit, "both readers find the same settings");
    require(plain.thresholds.critical <= plain.thresholds.warning, "what is critical is a warning");
}

const Targets settings{{"settings", runSettings}};

} // namespace
} // namespace tokwatch::fuzzing

#include "Tokwatch/Preferences/AllSettings.h"

#include "Tokwatch/Preferences/AlertPreferences.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "Tokwatch/Preferences/SettingsFile.h"
#include "Tokwatch/Preferences/UpdatePreferences.h"
#include "Tokwatch/Preferences/WidgetPreferences.h"

#include <algorithm>
#include <utility>

namespace tokwatch {

AllSettings::AllSettings(Open open) {
    add<Preferences>("", settingsPath(), open);
    add<AlertPreferences>("notifications.", alertSettingsPath(), open);
    add<WidgetPreferences>("widget.", widgetSettingsPath(), open);
}

template<typename Group>
void AllSettings::add(std::string prefix, std::filesystem::path path, Open open) {
    auto group = std::make_unique<Group>(open(path));
    files.push_back({std::move(prefix), std::move(path), std::move(group)});
}

AllSettings AllSettings::ofUser() {
    return AllSettings(settingsFile);
}

AllSettings AllSettings::ofNobody() {
    return AllSettings([](const std::filesystem::path&) { return settingsOfNobody(); });
}

std::vector<NamedSetting> AllSettings::all() const {
    std::vector<NamedSetting> settings;
    for (const File& file : files)
        for (AnySetting* setting : file.group->all())
            settings.push_back({file.prefix + setting->name, *setting, *file.group, file.path});
    return settings;
}

std::vector<FileFaults> AllSettings::faults() const {
    std::vector<FileFaults> all;
    for (const File& file : files)
        all.push_back({file.path, file.group->faultsOf(file.path)});
    const std::filesystem::path updates = updateSettingsPath();
    all.push_back({updates, UpdatePreferences(settingsOfNobody()).faultsOf(updates)});
    all.push_back({desktopSettingsPath(), settingsFaults(desktopSettingsPath())});
    return all;
}

std::optional<NamedSetting> AllSettings::named(std::string_view name) const {
    const std::vector<NamedSetting> settings = all();
    const auto found = std::ranges::find(settings, name, &NamedSetting::name);
    return found == settings.end() ? std::nullopt : std::optional(*found);
}

} // namespace tokwatch

#include "Tokwatch/CommandLine/Commands.h"

#include "Tokwatch/CommandLine/Terminal/Table.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Records/RecordCoding.h"

#include <QSettings>

namespace tokwatch {
namespace {

/// Settings for the time of one command.
struct HeldPreferences {
    std::unique_ptr<QSettings> settings;
    Preferences preferences{*settings};
};

Json jsonOf(const std::string& text) {
    Json value = Json::parse(text, nullptr, false);
    return value.is_boolean() || value.is_number() ? value : Json(text);
}

} // namespace

std::vector<std::string> settingNames() {
    const HeldPreferences nobody{settingsOfNobody()};
    std::vector<std::string> names;
    for (const AnySetting* setting : nobody.preferences.all())
        names.emplace_back(setting->name);
    return names;
}

int runPreferencesList(const CommandSurroundings& surroundings) {
    const HeldPreferences user{userSettings()};
    if (surroundings.json) {
        Json all = Json::object();
        for (const AnySetting* setting : user.preferences.all())
            all[setting->name] = jsonOf(setting->text());
        surroundings.terminal.line(jsonText(all));
        return exitOk;
    }
    Table table({{"Setting"}, {"Value"}, {"May be"}});
    for (const AnySetting* setting : user.preferences.all())
        table.add({{setting->name, Tone::bold},
                   {fitted(setting->text(), 200)},
                   {setting->domain().values, Tone::dim}});
    table.print(surroundings.terminal);
    return exitOk;
}

int runPreferencesGet(const CommandSurroundings& surroundings, const std::string& name) {
    const HeldPreferences user{userSettings()};
    const std::string value = user.preferences.named(name)->text();
    surroundings.terminal.line(surroundings.json ? jsonText(jsonOf(value)) : value);
    return exitOk;
}

int runPreferencesSet(const CommandSurroundings& surroundings, const std::string& name,
                      const std::string& value) {
    HeldPreferences user{userSettings()};
    if (const auto refusal = user.preferences.named(name)->assignText(value)) {
        surroundings.terminal.error(*refusal);
        return exitUsage;
    }
    if (!user.preferences.save())
        throw CommandError("writing " + settingsPath().string() + " failed");
    return exitOk;
}

} // namespace tokwatch

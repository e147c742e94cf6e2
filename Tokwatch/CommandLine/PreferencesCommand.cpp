#include "Tokwatch/CommandLine/PreferencesCommand.h"

#include "Tokwatch/CommandLine/Table.h"
#include "Tokwatch/Preferences/PreferenceKeys.h"
#include "Tokwatch/Preferences/Preferences.h"
#include "TokwatchCore/Records/RecordCoding.h"

#include <QSettings>

namespace tokwatch {
namespace {

/// The user's settings for the time of one command.
struct UserPreferences {
    std::unique_ptr<QSettings> settings = userSettings();
    Preferences preferences{*settings};
};

Json jsonOf(const std::string& text) {
    Json value = Json::parse(text, nullptr, false);
    return value.is_boolean() || value.is_number() ? value : Json(text);
}

} // namespace

std::vector<std::string> settingNames() {
    std::vector<std::string> names;
    for (const PreferenceKey& key : preferenceKeys())
        names.emplace_back(key.name);
    return names;
}

int runPreferencesList(const CommandEnvironment& environment) {
    const UserPreferences user;
    if (environment.json) {
        Json all = Json::object();
        for (const PreferenceKey& key : preferenceKeys())
            all[std::string(key.name)] = jsonOf(key.get(user.preferences));
        environment.terminal.line(jsonText(all));
        return exitOk;
    }
    Table table({{"Setting"}, {"Value"}, {"May be"}});
    for (const PreferenceKey& key : preferenceKeys())
        table.add({{std::string(key.name), Tone::bold},
                   {fitted(key.get(user.preferences), 200)},
                   {std::string(key.values), Tone::dim}});
    table.print(environment.terminal);
    return exitOk;
}

int runPreferencesGet(const CommandEnvironment& environment, const std::string& name) {
    const UserPreferences user;
    const std::string value = preferenceKey(name)->get(user.preferences);
    environment.terminal.line(environment.json ? jsonText(jsonOf(value)) : value);
    return exitOk;
}

int runPreferencesSet(const CommandEnvironment& environment, const std::string& name,
                      const std::string& value) {
    UserPreferences user;
    if (const auto refusal = preferenceKey(name)->set(user.preferences, value)) {
        environment.terminal.error(*refusal);
        return exitUsage;
    }
    if (!user.preferences.save())
        throw CommandError("writing " + settingsPath().string() + " failed");
    return exitOk;
}

} // namespace tokwatch

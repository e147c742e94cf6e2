#include "Tokwatch/CommandLine/Commands.h"

#include "Tokwatch/CommandLine/Terminal/Table.h"
#include "Tokwatch/CommandLine/Terminal/VersionedJson.h"
#include "Tokwatch/Preferences/AllSettings.h"
#include "TokwatchCore/Records/RecordCoding.h"

#include <utility>

namespace tokwatch {
namespace {

Json jsonOf(const std::string& text) {
    Json value = Json::parse(text, nullptr, false);
    return value.is_boolean() || value.is_number() ? value : Json(text);
}

} // namespace

std::vector<std::string> settingNames() {
    std::vector<std::string> names;
    for (const NamedSetting& each : AllSettings::ofNobody().all())
        names.push_back(each.name);
    return names;
}

int runPreferencesList(const CommandSurroundings& surroundings) {
    const AllSettings settings = AllSettings::ofUser();
    if (surroundings.json) {
        Json all = Json::object();
        for (const NamedSetting& each : settings.all())
            all[each.name] = jsonOf(each.setting.text());
        surroundings.terminal.line(jsonText(versioned(std::move(all))));
        return exitOk;
    }
    Table table({{"Setting"}, {"Value"}, {"May be"}});
    for (const NamedSetting& each : settings.all())
        table.add({{each.name, Tone::bold},
                   {fitted(each.setting.text(), 200)},
                   {each.setting.domain().values, Tone::dim}});
    table.print(surroundings.terminal);
    return exitOk;
}

int runPreferencesGet(const CommandSurroundings& surroundings, const std::string& name) {
    const AllSettings settings = AllSettings::ofUser();
    const std::string value = settings.named(name)->setting.text();
    surroundings.terminal.line(surroundings.json ? jsonText(jsonOf(value)) : value);
    return exitOk;
}

int runPreferencesSet(const CommandSurroundings& surroundings, const std::string& name,
                      const std::string& value) {
    const AllSettings settings = AllSettings::ofUser();
    const NamedSetting wanted = *settings.named(name);
    if (const auto refusal = wanted.setting.assignText(value)) {
        surroundings.terminal.error(wanted.name.substr(0, wanted.name.rfind('.') + 1) + *refusal);
        return exitUsage;
    }
    if (!wanted.group.save()) throw CommandError("writing " + wanted.file.string() + " failed");
    return exitOk;
}

} // namespace tokwatch

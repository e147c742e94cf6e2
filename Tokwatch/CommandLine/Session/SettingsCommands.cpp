#include "Tokwatch/CommandLine/Session/SessionCommands.h"
#include "Tokwatch/CommandLine/Suggestion.h"
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

/// A name that nobody has is a usage error.
NamedSetting settingNamed(const AllSettings& settings, const std::string& name) {
    if (const std::optional<NamedSetting> found = settings.named(name)) return *found;
    std::vector<std::string> names;
    for (const NamedSetting& each : settings.all())
        names.push_back(each.name);
    throw UsageError("no setting is called \"" + name + '"' + suggestion(name, names));
}

} // namespace

int SessionCommands::run(const CommandSurroundings& surroundings, const ListSettingsOptions&) {
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

int SessionCommands::run(const CommandSurroundings& surroundings,
                         const GetSettingOptions& options) {
    const AllSettings settings = AllSettings::ofUser();
    const std::string value = settingNamed(settings, options.name).setting.text();
    surroundings.terminal.line(surroundings.json ? jsonText(jsonOf(value)) : value);
    return exitOk;
}

int SessionCommands::run(const CommandSurroundings& surroundings,
                         const SetSettingOptions& options) {
    const AllSettings settings = AllSettings::ofUser();
    const NamedSetting wanted = settingNamed(settings, options.name);
    if (const auto refusal = wanted.setting.assignText(options.value)) {
        surroundings.terminal.error(wanted.name.substr(0, wanted.name.rfind('.') + 1) + *refusal);
        return exitUsage;
    }
    if (!wanted.group.save())
        throw CommandError("writing " + wanted.file.string() +
                           " failed: " + wanted.group.whyUnsaved());
    return exitOk;
}

} // namespace tokwatch

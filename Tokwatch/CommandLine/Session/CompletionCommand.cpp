#include "Tokwatch/CommandLine/Session/SessionCommands.h"
#include "Tokwatch/Preferences/AllSettings.h"

#include <CLI/CLI.hpp>

#include <string_view>

namespace tokwatch {
namespace {

using Lines = std::vector<std::string>;

std::string line(std::string_view word, std::string_view about) {
    return std::string(word).append("\t").append(about);
}

/// In a list only the last item is offered, together with those before it.
Lines valuesOfSetting(const std::string& name, const std::string& current) {
    const AllSettings nobodys = AllSettings::ofNobody();
    const std::optional<NamedSetting> named = nobodys.named(name);
    if (!named) return {};
    const SettingDomain domain = named->setting.domain();
    const std::size_t comma = domain.isList ? current.rfind(',') : std::string::npos;
    const std::string before = comma == std::string::npos ? "" : current.substr(0, comma + 1);
    Lines lines;
    for (const std::string_view word : domain.words)
        lines.push_back(before + std::string(word));
    return lines;
}

Lines settings() {
    const AllSettings nobodys = AllSettings::ofNobody();
    Lines lines;
    for (const auto& [name, setting, group, file] : nobodys.all())
        lines.push_back(line(name, setting.about + (": " + setting.domain().values)));
    return lines;
}

/// By the name of the option's type, as the help has it.
Lines values(const CLI::Option& option, const Lines& before, const std::string& current) {
    const std::string type = option.get_type_name();
    if (type == "DIR") return {":directories"};
    if (type == "FILE") return {":files"};
    if (type == "KEY") return settings();
    if (type == "VALUE") return valuesOfSetting(before.front(), current);
    if (type.find('|') == std::string::npos) return {};
    return CLI::detail::split(type, '|');
}

bool takesValue(const CLI::Option* option) {
    return option != nullptr && option->get_items_expected_max() > 0;
}

/// Where on the command line a word stands.
struct Place {
    const CLI::App* command;
    const CLI::Option* awaited = nullptr; ///< the option whose value it is
    Lines arguments;                      ///< of the command, before it

    void pass(const std::string& word) {
        if (takesValue(awaited)) {
            awaited = nullptr;
        } else if (word.starts_with('-')) {
            awaited =
                word.find('=') == std::string::npos ? command->get_option_no_throw(word) : nullptr;
        } else if (const auto found = command->get_subcommands(
                       [&word](const CLI::App* each) { return each->get_name() == word; });
                   !found.empty()) {
            command = found.front();
        } else {
            arguments.push_back(word);
        }
    }

    Lines offers(const std::string& current) const {
        if (takesValue(awaited)) return values(*awaited, arguments, current);
        if (const std::size_t equals = current.find('=');
            current.starts_with('-') && equals != std::string::npos) {
            const CLI::Option* option = command->get_option_no_throw(current.substr(0, equals));
            Lines lines = takesValue(option)
                              ? values(*option, arguments, current.substr(equals + 1))
                              : Lines();
            for (std::string& each : lines)
                if (!each.starts_with(':')) each.insert(0, current, 0, equals + 1);
            return lines;
        }
        Lines lines;
        if (current.starts_with('-')) {
            for (const CLI::Option* each : command->get_options())
                for (const std::string& name : each->get_lnames())
                    lines.push_back(line("--" + name, each->get_description()));
            return lines;
        }
        for (const CLI::App* each : command->get_subcommands({}))
            lines.push_back(line(each->get_name(), each->get_description()));
        std::size_t position = 0;
        for (const CLI::Option* each : command->get_options())
            if (each->get_positional() && position++ == arguments.size())
                return values(*each, arguments, current);
        return lines;
    }
};

} // namespace

int SessionCommands::run(const CommandSurroundings& surroundings,
                         const CompletionOptions& options) {
    std::vector<std::string> words = options.words;
    if (words.empty()) words.emplace_back();
    std::string current = std::move(words.back());
    words.pop_back();
    // bash takes "--unit=cost" apart.
    if (current == "=") current.clear();
    std::erase(words, "=");
    Place place{options.commands, nullptr, {}};
    for (const std::string& word : words)
        place.pass(word);
    for (const std::string& offer : place.offers(current))
        surroundings.terminal.write(offer + '\n');
    return exitOk;
}

} // namespace tokwatch

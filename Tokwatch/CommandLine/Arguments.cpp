#include "Arguments.h"

#include "CommandEnvironment.h"
#include "DesktopCommand.h"
#include "DoctorCommand.h"
#include "IndexCommand.h"
#include "RereadCommand.h"
#include "SummaryCommand.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tokwatch {
namespace {

/// More days than any store holds; keeps a mistyped number from filling the memory.
constexpr int mostDays = 36'500;

/// What the command line said, to be carried out once it is known to be sound.
struct Invocation {
    std::string home;
    std::string dataDirectory;
    bool json = false;
    /// The desktop application unless a command replaces it.
    std::function<int(const CommandEnvironment&)> run = [this](const CommandEnvironment&) {
        return runDesktop(pathOptions());
    };

    std::vector<std::string> pathOptions() const {
        std::vector<std::string> options;
        if (!home.empty()) options.insert(options.end(), {"--home", home});
        if (!dataDirectory.empty()) options.insert(options.end(), {"--data-dir", dataDirectory});
        return options;
    }

    CommandEnvironment environment(Terminal& terminal) const {
        UserPaths paths = UserPaths::current();
        if (!home.empty()) paths.home = std::filesystem::absolute(home).lexically_normal();
        if (!dataDirectory.empty()) paths.dataHome = std::filesystem::absolute(dataDirectory);
        return {paths, Calendar::current(), systemNow, terminal, json};
    }
};

void addPaths(CLI::App& command, Invocation& invocation) {
    command
        .add_option("--home", invocation.home,
                    "Where the assistants' files are (default: your home directory)")
        ->type_name("DIR");
    command
        .add_option("--data-dir", invocation.dataDirectory,
                    "Where Tokwatch keeps its data (default: $XDG_DATA_HOME or ~/.local/share)")
        ->type_name("DIR");
}

CLI::App& addDataCommand(CLI::App& app, Invocation& invocation, const std::string& name,
                         const std::string& about) {
    CLI::App& command = *app.add_subcommand(name, about);
    addPaths(command, invocation);
    command.add_flag("--json", invocation.json, "Print JSON for programs");
    return command;
}

template<typename Value>
CLI::Option* addChoice(CLI::App& command, const std::string& name, Value& value,
                       const std::map<std::string, Value>& choices, const std::string& about) {
    std::vector<std::string> names;
    for (const auto& [choice, meaning] : choices)
        names.push_back(choice);
    return command
        .add_option_function<std::string>(
            name, [&value, choices](const std::string& choice) { value = choices.at(choice); },
            about)
        ->check(CLI::IsMember(names).description(""))
        ->type_name(CLI::detail::join(names, "|"));
}

void addIndex(CLI::App& app, Invocation& invocation) {
    addDataCommand(app, invocation, "index", "Read what the assistants logged since the last time")
        .callback([&invocation] { invocation.run = runIndex; });
}

void addSummary(CLI::App& app, Invocation& invocation, SummaryOptions& options) {
    CLI::App& command =
        addDataCommand(app, invocation, "summary", "Show tokens and what they would have cost");
    command.add_option("--days", options.days, "How many days, today included (default: 30)")
        ->type_name("N")
        ->check(CLI::Range(-mostDays, mostDays).description(""));
    addChoice<SummaryUnit>(command, "--unit", options.unit,
                           {{"cost", SummaryUnit::cost}, {"tokens", SummaryUnit::tokens}},
                           "Lead with money or tokens");
    addChoice<std::optional<SummaryTable>>(
        command, "--by", options.by,
        {{"tool", SummaryTable::tool}, {"model", SummaryTable::model}, {"day", SummaryTable::day}},
        "Show this table only");
    command.add_flag("--no-index", options.skipIndex,
                     "Show what is stored without reading the logs first");
    command.callback([&] {
        invocation.run = [&options](const CommandEnvironment& environment) {
            return runSummary(environment, options);
        };
    });
}

void addReread(CLI::App& app, Invocation& invocation, ProviderID& provider) {
    CLI::App& command =
        addDataCommand(app, invocation, "reread",
                       "Forget how far a provider's logs were read, and read them again");
    std::map<std::string, ProviderID> providers;
    for (const ProviderID each : allProviders)
        providers.emplace(rawValue(each), each);
    addChoice<ProviderID>(command, "provider", provider, providers, "Whose logs")->required();
    command.callback([&] {
        invocation.run = [&provider](const CommandEnvironment& environment) {
            return runReread(environment, provider);
        };
    });
}

void addDoctor(CLI::App& app, Invocation& invocation) {
    addDataCommand(app, invocation, "doctor", "Tell what was found, what works and what does not")
        .callback([&invocation] { invocation.run = runDoctor; });
}

/// The first line of what the parser says; some of its messages have several.
std::string oneLine(const std::string& message) {
    return message.substr(0, message.find('\n'));
}

} // namespace

int runCommandLine(int argc, const char* const* argv, Terminal& terminal) {
    CLI::App app(
        "Rate limits and token usage of AI coding assistants. Without a command: the desktop application.",
        "tokwatch");
    app.set_version_flag("--version", "tokwatch " TOKWATCH_VERSION);
    app.require_subcommand(0, 1);
    app.get_formatter()->column_width(34);

    Invocation invocation;
    SummaryOptions summary;
    ProviderID rereadProvider = ProviderID::claude;
    addPaths(app, invocation);
    addIndex(app, invocation);
    addSummary(app, invocation, summary);
    addReread(app, invocation, rereadProvider);
    addDoctor(app, invocation);

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& wanted) {
        return app.exit(wanted);
    } catch (const CLI::ParseError& error) {
        terminal.error(oneLine(error.what()) + " (see tokwatch --help)");
        return exitUsage;
    }
    try {
        const int status = invocation.run(invocation.environment(terminal));
        if (!terminal.flush()) throw CommandError("writing the output failed");
        return status;
    } catch (const std::exception& error) {
        terminal.error(error.what());
        return exitFailure;
    }
}

} // namespace tokwatch

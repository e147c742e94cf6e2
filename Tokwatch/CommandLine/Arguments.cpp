#include "Tokwatch/CommandLine/Arguments.h"

#include "Tokwatch/CommandLine/Assistant/StatuslineCommand.h"
#include "Tokwatch/CommandLine/Frame/CommandFrame.h"
#include "Tokwatch/CommandLine/Suggestion.h"
#include "TokwatchCore/Store/LimitHistory.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tokwatch {
namespace {

/// More days than any store holds; keeps a mistyped number from filling the memory.
constexpr int mostDays = 36'500;

/// What the command line said, to be carried out once it is known to be sound.
struct Invocation {
    DataArguments arguments;
    bool opens = false;
    std::optional<Command> command;

    /// The desktop application unless there is a command.
    Command wanted() const {
        if (command && opens) throw UsageError("--open is for the windows, not for a command");
        return command.value_or(DesktopOptions{desktopOptions()});
    }

    std::vector<std::string> desktopOptions() const {
        std::vector<std::string> options;
        if (opens) options.emplace_back("--open");
        if (!arguments.home.empty()) options.insert(options.end(), {"--home", arguments.home});
        if (!arguments.dataDirectory.empty())
            options.insert(options.end(), {"--data-dir", arguments.dataDirectory});
        return options;
    }

    CommandSurroundings surroundings(Terminal& terminal) const {
        const UserPaths paths = arguments.paths();
        return {paths,    Calendar::current, systemNow,
                terminal, arguments.json,    limitHistoryBeside(paths.database())};
    }
};

CLI::App& addDataCommand(CLI::App& app, Invocation& invocation, const std::string& name,
                         const std::string& about) {
    return addDataCommand(app, invocation.arguments, name, about);
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
        .callback([&invocation] { invocation.command = IndexOptions(); });
}

void addSummary(CLI::App& app, Invocation& invocation, SummaryOptions& options) {
    CLI::App& command =
        addDataCommand(app, invocation, "summary", "Show tokens and what they would have cost");
    command.add_option("--days", options.days, "How many days, today included (default: 30)")
        ->type_name("N")
        ->check(CLI::Range(1, mostDays).description(""));
    addChoice<SummaryUnit>(command, "--unit", options.unit,
                           {{"cost", SummaryUnit::cost}, {"tokens", SummaryUnit::tokens}},
                           "Lead with money or tokens");
    addChoice<std::optional<SummaryTable>>(
        command, "--by", options.by,
        {{"tool", SummaryTable::tool}, {"model", SummaryTable::model}, {"day", SummaryTable::day}},
        "Show this table only");
    command.add_flag("--no-index", options.skipIndex,
                     "Show what is stored without reading the logs first");
    command.callback([&] { invocation.command = options; });
}

std::map<std::string, ProviderID> providersByName() {
    std::map<std::string, ProviderID> providers;
    for (const ProviderID each : allCases<ProviderID>)
        providers.emplace(rawValue(each), each);
    return providers;
}

std::map<std::string, std::optional<ProviderID>> optionalProvidersByName() {
    const std::map<std::string, ProviderID> providers = providersByName();
    return {providers.begin(), providers.end()};
}

/// What words say of `tokwatch limits` and `tokwatch status`, each of which is two commands.
struct LimitsWords {
    std::optional<ProviderID> provider;
    bool refresh = false;
};
struct StatusWords {
    StatusFormat format = StatusFormat::text;
    bool follow = false;
};

void addLimits(CLI::App& app, Invocation& invocation, LimitsWords& words) {
    CLI::App& command =
        addDataCommand(app, invocation, "limits", "Show how much of each limit is left");
    command.add_flag("--refresh", words.refresh,
                     "Ask the services first, with the logins that the assistants stored");
    addChoice(command, "--provider", words.provider, optionalProvidersByName(),
              "Show this provider only");
    command.callback([&] {
        invocation.command = words.refresh ? Command(FreshLimitsOptions{words.provider})
                                           : Command(LimitsOptions{words.provider});
    });
}

void addStatus(CLI::App& app, Invocation& invocation, StatusWords& words) {
    CLI::App& command =
        addDataCommand(app, invocation, "status", "Print the title of the status area");
    command.add_flag("--follow", words.follow,
                     "Watch logs and limits, and print a line at each change");
    addChoice<StatusFormat>(command, "--format", words.format,
                            {{"text", StatusFormat::text},
                             {"json", StatusFormat::json},
                             {"waybar", StatusFormat::waybar},
                             {"pango", StatusFormat::pango},
                             {"polybar", StatusFormat::polybar},
                             {"tmux", StatusFormat::tmux}},
                            "How it is written (default: text)")
        ->excludes("--json");
    command.callback([&] {
        if (invocation.arguments.json) words.format = StatusFormat::json;
        invocation.command = words.follow ? Command(FollowOptions{words.format})
                                          : Command(StatusOptions{words.format});
    });
}

void addWatch(CLI::App& app, Invocation& invocation) {
    CLI::App& command =
        *app.add_subcommand("watch", "Show limits and today's usage, kept up to date");
    addPaths(command, invocation.arguments);
    command.callback([&invocation] { invocation.command = WatchOptions(); });
}

void addRefresh(CLI::App& app, Invocation& invocation) {
    app.add_subcommand("refresh", "Make the running application refresh")->callback([&invocation] {
        invocation.command = RefreshOptions();
    });
}

void addSnapshot(CLI::App& app, Invocation& invocation) {
    addDataCommand(app, invocation, "snapshot", "Print the snapshot that widgets read, as JSON")
        .callback([&invocation] { invocation.command = SnapshotOptions(); });
}

void addPreferences(CLI::App& app, Invocation& invocation, SetSettingOptions& setting) {
    CLI::App& command = *app.add_subcommand("preferences", "Print and change settings");
    const auto addName = [&setting](CLI::App& action) {
        action.add_option("key", setting.name, "The setting")->required()->type_name("KEY");
    };
    const auto addJSON = [&invocation](CLI::App& action) {
        action.add_flag("--json", invocation.arguments.json, "Print JSON for programs");
    };
    addJSON(command);
    command.callback([&command, &invocation] {
        if (command.get_subcommands().empty()) invocation.command = ListSettingsOptions();
    });
    CLI::App& list = *command.add_subcommand("list", "Print all settings (default)");
    addJSON(list);
    list.callback([&invocation] { invocation.command = ListSettingsOptions(); });
    CLI::App& get = *command.add_subcommand("get", "Print one setting");
    addName(get);
    addJSON(get);
    get.callback([&] { invocation.command = GetSettingOptions{setting.name}; });
    CLI::App& set = *command.add_subcommand("set", "Change one setting");
    addName(set);
    set.add_option("value", setting.value, "What it is to be")->required()->type_name("VALUE");
    set.callback([&] { invocation.command = setting; });
}

void addReread(CLI::App& app, Invocation& invocation, RereadOptions& options) {
    CLI::App& command =
        addDataCommand(app, invocation, "reread",
                       "Forget how far a provider's logs were read, and read them again");
    addChoice<ProviderID>(command, "provider", options.provider, providersByName(), "Whose logs")
        ->required();
    command.callback([&] { invocation.command = options; });
}

void addDoctor(CLI::App& app, Invocation& invocation, DoctorOptions& options) {
    CLI::App& command = addDataCommand(app, invocation, "doctor",
                                       "Tell what was found, what works and what does not");
    command.add_flag("--fix", options.fix, "Close to other users what they may read of the data");
    command.callback([&] { invocation.command = options; });
}

void addReport(CLI::App& app, Invocation& invocation, ReportOptions& options) {
    CLI::App& command = addDataCommand(app, invocation, "report",
                                       "Add up what was used, from the assistants' own files");
    std::map<std::string, ReportBy> subjects;
    for (const ReportBy each : allCases<ReportBy>)
        subjects.emplace(rawValue(each), each);
    addChoice(command, "--by", options.by, subjects, "What has a row (default: project)");
    command.add_option("--days", options.days, "How many days, today included (default: 30)")
        ->type_name("N")
        ->check(CLI::Range(1, mostDays).description(""));
    command.add_option("--since", options.since, "The first day, as 2026-01-31")->type_name("DATE");
    command.add_option("--until", options.until, "The last day (default: today)")
        ->type_name("DATE");
    addChoice(command, "--provider", options.provider, optionalProvidersByName(),
              "Count this provider only");
    command.add_flag("--csv", options.csv, "Print comma-separated values for spreadsheets");
    command.callback([&] { invocation.command = options; });
}

void addAudit(CLI::App& app, Invocation& invocation, bool& all) {
    CLI::App& command = addDataCommand(
        app, invocation, "audit", "Compare what is stored with the files, and explain differences");
    command.add_flag("--all", all, "Show the days and models that agree, too");
    command.callback(
        [&] { invocation.command = AuditOptions{all ? AuditRows::all : AuditRows::differing}; });
}

void addExport(CLI::App& app, Invocation& invocation, ExportOptions& options) {
    CLI::App& command = addDataCommand(app, invocation, "export",
                                       "Print what is stored, for collectors and spreadsheets");
    addChoice<ExportFormat>(command, "--format", options.format,
                            {{"prometheus", ExportFormat::prometheus},
                             {"csv", ExportFormat::csv},
                             {"json", ExportFormat::json}},
                            "How it is written (default: prometheus)")
        ->excludes("--json");
    command.add_option("--host", options.host, "Whose it is (default: this machine's name)")
        ->type_name("NAME");
    command.add_option("--output", options.output, "Replace this file as a whole")
        ->type_name("FILE")
        ->check([](const std::string& name) {
            return std::string(name.empty() ? "no file is named" : "");
        });
    command.callback([&] {
        if (invocation.arguments.json) options.format = ExportFormat::json;
        invocation.command = options;
    });
}

/// What a command might have been that there is not.
std::string suggestionFor(const CLI::ParseError& error, const CLI::App& app,
                          std::string_view word) {
    if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::ExtrasError)) return {};
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands({}))
        names.push_back(command->get_name());
    // One that there is was not what was wrong.
    if (std::ranges::count(names, word) > 0) return {};
    return suggestion(word, names);
}

} // namespace

int runCommandLine(int argc, const char* const* argv, Terminal& terminal,
                   const CarryOut& carryOut) {
    // Asked for by scripts, and all that the rest of this takes is for something else.
    if (argc == 2 && std::string_view(argv[1]) == "--version") {
        return carriedOut(terminal, [&terminal] {
            terminal.line(versionText());
            return exitOk;
        });
    }
    CLI::App app(
        "Rate limits and token usage of AI coding assistants. Without a command: the desktop application.",
        "tokwatch");
    addVersion(app);
    app.require_subcommand(0, 1);
    app.get_formatter()->column_width(34);

    Invocation invocation;
    SummaryOptions summary;
    LimitsWords limits;
    StatusWords title;
    StatuslineOptions statusline;
    SetSettingOptions setting;
    RereadOptions reread;
    ReportOptions report;
    ExportOptions exported;
    bool showsAllRows = false;
    DoctorOptions doctor;
    addPaths(app, invocation.arguments);
    app.add_flag("--open", invocation.opens,
                 "Open the window also where the desktop application does not run yet");
    const std::pair<std::string_view, std::function<void()>> commands[] = {
        {"index", [&] { addIndex(app, invocation); }},
        {"summary", [&] { addSummary(app, invocation, summary); }},
        {"limits", [&] { addLimits(app, invocation, limits); }},
        {"status", [&] { addStatus(app, invocation, title); }},
        {"watch", [&] { addWatch(app, invocation); }},
        {"statusline",
         [&] {
             addStatusline(app, invocation.arguments, statusline).callback([&] {
                 invocation.command = statusline;
             });
         }},
        {"refresh", [&] { addRefresh(app, invocation); }},
        {"reread", [&] { addReread(app, invocation, reread); }},
        {"snapshot", [&] { addSnapshot(app, invocation); }},
        {"preferences", [&] { addPreferences(app, invocation, setting); }},
        {"report", [&] { addReport(app, invocation, report); }},
        {"export", [&] { addExport(app, invocation, exported); }},
        {"audit", [&] { addAudit(app, invocation, showsAllRows); }},
        {"doctor", [&] { addDoctor(app, invocation, doctor); }},
    };
    // For a command its own words are enough; help, completion and suggestions need all.
    const std::string_view first = argc > 1 ? argv[1] : "";
    const auto named =
        std::ranges::find(commands, first, [](const auto& each) { return each.first; });
    for (const auto& [name, add] : commands) {
        if (named == std::end(commands) || name == first) add();
    }

    // Shells ask for this and people do not; the words may be anything.
    if (first == "complete") {
        const CompletionOptions completion{&app, {argv + 2, argv + argc}};
        return carriedOut(terminal,
                          [&] { return carryOut(invocation.surroundings(terminal), completion); });
    }
    const auto suggest = [&](const CLI::ParseError& error) {
        return suggestionFor(error, app, argv[1]);
    };
    return runArguments(
        app, argc, argv, terminal,
        [&] { return carryOut(invocation.surroundings(terminal), invocation.wanted()); }, suggest);
}

} // namespace tokwatch

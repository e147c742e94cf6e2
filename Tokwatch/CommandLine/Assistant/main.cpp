#include "Platform/Linux/ProcessStart.h"
#include "Platform/System/Places.h"
#include "Tokwatch/CommandLine/Assistant/StatuslineCommand.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string_view>
#include <system_error>

/// `tokwatch`: the status line of an assistant, which has no time to load what the other commands
/// need, and for all else the program that has them.
namespace tokwatch {
namespace {

int becomeCommands(char** argv, Terminal& terminal) {
    const std::filesystem::path program = ourProgram("tokwatch-commands");
    ::execv(program.c_str(), argv);
    terminal.error("starting " + program.string() +
                   " failed: " + std::generic_category().message(errno));
    return exitFailure;
}

int runAssistantLine(int argc, const char* const* argv, Terminal& terminal) {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    preventCoreDumps();
    CLI::App app("", "tokwatch");
    DataArguments arguments;
    StatuslineOptions options;
    addStatusline(app, arguments, options);
    return runArguments(app, argc, argv, terminal,
                        [&] { return runStatusline(arguments, options); });
}

} // namespace
} // namespace tokwatch

int main(int argc, char** argv) {
    tokwatch::Terminal terminal = tokwatch::Terminal::standard();
    const bool isAssistantLine = argc > 1 && std::string_view(argv[1]) == "statusline";
    return isAssistantLine ? tokwatch::runAssistantLine(argc, argv, terminal)
                           : tokwatch::becomeCommands(argv, terminal);
}

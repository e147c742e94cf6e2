#include "Platform/Linux/ProcessStart.h"
#include "Tokwatch/CommandLine/Arguments.h"
#include "Tokwatch/CommandLine/StoredCommands.h"

#include <string_view>

namespace tokwatch {
namespace {

/// Apart from all other commands, whose many words take longer to set up than the line: it is
/// printed at every change of a prompt.
int runAssistantLine(int argc, char** argv, Terminal& terminal) {
    CLI::App app("", "tokwatch");
    DataArguments arguments;
    StatuslineOptions options;
    addStatusline(app, arguments, options);
    return runArguments(app, argc, argv, terminal,
                        [&] { return runStatusline(arguments.paths(), arguments.json, options); });
}

} // namespace
} // namespace tokwatch

int main(int argc, char** argv) {
    tokwatch::prepareCommand();
    tokwatch::Terminal terminal = tokwatch::Terminal::standard();
    const bool isAssistantLine = argc > 1 && std::string_view(argv[1]) == "statusline";
    return isAssistantLine ? tokwatch::runAssistantLine(argc, argv, terminal)
                           : tokwatch::runProgram<tokwatch::StoredCommands>(argc, argv, terminal);
}

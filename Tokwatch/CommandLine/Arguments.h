#pragma once

#include "Tokwatch/CommandLine/Command.h"
#include "Tokwatch/CommandLine/CommandSurroundings.h"
#include "Tokwatch/CommandLine/Frame/CommandFrame.h"
#include "Tokwatch/CommandLine/Terminal/Terminal.h"

#include <functional>
#include <variant>

namespace tokwatch {

/// Does what a command asks for; the process's exit status. Throws CommandError and UsageError.
using CarryOut = std::function<int(const CommandSurroundings&, const Command&)>;

/// Parses the command line and has what it asks for carried out; the process's exit status. A usage
/// error is one line on standard error and status 2.
int runCommandLine(int argc, const char* const* argv, Terminal& terminal, const CarryOut& carryOut);

/// The command line of one of our programs, which carries out the commands that `Commands` can
/// `run`, and becomes the program that has it for any other.
template<typename Commands>
int runProgram(int argc, char** argv, Terminal& terminal) {
    const auto carryOut = [argv](const CommandSurroundings& surroundings, const Command& command) {
        return std::visit(
            [&](const auto& options) -> int {
                if constexpr (requires { Commands::run(surroundings, options); })
                    return Commands::run(surroundings, options);
                else
                    become(options.program, argv);
            },
            command);
    };
    return runCommandLine(argc, argv, terminal, carryOut);
}

} // namespace tokwatch

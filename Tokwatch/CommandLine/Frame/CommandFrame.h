#pragma once

#include "Platform/Linux/UserPaths.h"
#include "Tokwatch/CommandLine/Frame/CommandError.h"
#include "Tokwatch/CommandLine/Terminal/Terminal.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

/// What all command lines of ours have in common, be they read by the program with all commands or
/// by the one that starts sooner.
namespace tokwatch {

/// The options that every command takes which reads or shows data.
struct DataArguments {
    std::string home;
    std::string dataDirectory;
    bool json = false;

    UserPaths paths() const;
};
void addPaths(CLI::App& command, DataArguments& arguments);
CLI::App& addDataCommand(CLI::App& app, DataArguments& arguments, const std::string& name,
                         const std::string& about);

/// Reads the words and runs, or says why not, with what `suggest` has to add. The status that the
/// process ends with.
int runArguments(CLI::App& app, int argc, const char* const* argv, Terminal& terminal,
                 const std::function<int()>& run,
                 const std::function<std::string(const CLI::ParseError&)>& suggest = {});

} // namespace tokwatch

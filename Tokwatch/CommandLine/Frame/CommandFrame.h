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

/// Of our programs one has the commands that need no more than what is stored, one those that read
/// the assistants' logs, and one those that need an event loop: to go on, for the session's bus,
/// the network or the settings file. Each starts with no more libraries than its commands need.
namespace programs {
inline constexpr const char* stored = "tokwatch";
inline constexpr const char* logs = "tokwatch-logs";
inline constexpr const char* session = "tokwatch-session";
} // namespace programs

/// Makes this process another program of ours, with these words. Returns by CommandError alone,
/// where that cannot be started.
[[noreturn]] void become(const std::string& program, char** words);

std::string versionText();
/// The option that prints it.
void addVersion(CLI::App& app);

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

/// Runs, or says why not, as where the process may open too few files. The status that the process
/// ends with.
int carriedOut(Terminal& terminal, const std::function<int()>& run);

/// Reads the words and runs, or says why not, with what `suggest` has to add. The status that the
/// process ends with.
int runArguments(CLI::App& app, int argc, const char* const* argv, Terminal& terminal,
                 const std::function<int()>& run,
                 const std::function<std::string(const CLI::ParseError&)>& suggest = {});

} // namespace tokwatch

#include "Tokwatch/CommandLine/Frame/CommandFrame.h"

#include "Platform/Linux/ProcessStart.h"
#include "Platform/System/Places.h"
#include "TokwatchCore/Support/ApplicationVersion.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace tokwatch {
namespace {

/// A first pass has so many open: the store and its side files, the folders on the way to a log,
/// and a log for each reader.
constexpr int descriptors = 16;

/// The first line of what the parser says; some of its messages have several.
std::string oneLine(const std::string& message) {
    return message.substr(0, message.find('\n'));
}

} // namespace

void become(const std::string& name, char** words) {
    const std::filesystem::path program = ourProgram(name);
    // A first pass uses some ten thousand pages once, and on virtual machines a fault is dear. Of
    // large ones, where the kernel has them for who asks, it needs half as many. Programs that stay
    // would keep more memory than they need.
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there are no other threads.
    if (name == programs::logs) ::setenv("GLIBC_TUNABLES", "glibc.malloc.hugetlb=1", 0);
    ::execv(program.c_str(), words);
    throw CommandError("starting " + program.string() +
                       " failed: " + std::generic_category().message(errno));
}

std::string versionText() {
    return "tokwatch " + std::string(applicationVersion());
}

void addVersion(CLI::App& app) {
    app.set_version_flag("--version", versionText());
}

UserPaths DataArguments::paths() const {
    UserPaths paths = UserPaths::current();
    if (!home.empty()) paths.home = std::filesystem::absolute(home).lexically_normal();
    if (!dataDirectory.empty()) paths.dataHome = std::filesystem::absolute(dataDirectory);
    return paths;
}

void addPaths(CLI::App& command, DataArguments& arguments) {
    // What a script's unset variable gives would be the user's own files.
    const auto isNamed = [](const std::string& directory) {
        return std::string(directory.empty() ? "the directory has no name" : "");
    };
    command
        .add_option("--home", arguments.home,
                    "Where the assistants' files are (default: your home directory)")
        ->type_name("DIR")
        ->check(isNamed);
    command
        .add_option("--data-dir", arguments.dataDirectory,
                    "Where Tokwatch keeps its data (default: $XDG_DATA_HOME or ~/.local/share)")
        ->type_name("DIR")
        ->check(isNamed);
}

CLI::App& addDataCommand(CLI::App& app, DataArguments& arguments, const std::string& name,
                         const std::string& about) {
    CLI::App& command = *app.add_subcommand(name, about);
    addPaths(command, arguments);
    command.add_flag("--json", arguments.json, "Print JSON for programs");
    return command;
}

int carriedOut(Terminal& terminal, const std::function<int()>& run) {
    try {
        // With fewer, what cannot be opened would be missing from sums and costs without a word.
        requireDescriptors(descriptors);
        const int status = run();
        const std::error_code failure = terminal.flush();
        if (!failure) return status;
        // That its reader has had enough is no news to a program in a pipe.
        if (failure == std::errc::broken_pipe) return exitFailure;
        throw CommandError("writing the output failed: " + failure.message());
    } catch (const UsageError& error) {
        terminal.error(error.what() + std::string(" (see tokwatch --help)"));
        return exitUsage;
    } catch (const std::exception& error) {
        terminal.error(error.what());
        return exitFailure;
    }
}

int runArguments(CLI::App& app, int argc, const char* const* argv, Terminal& terminal,
                 const std::function<int()>& run,
                 const std::function<std::string(const CLI::ParseError&)>& suggest) {
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& wanted) {
        return app.exit(wanted);
    } catch (const CLI::ParseError& error) {
        terminal.error(oneLine(error.what()) + (suggest ? suggest(error) : "") +
                       " (see tokwatch --help)");
        return exitUsage;
    }
    return carriedOut(terminal, run);
}

} // namespace tokwatch

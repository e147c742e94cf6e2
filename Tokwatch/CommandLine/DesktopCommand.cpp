#include "Tokwatch/CommandLine/Commands.h"

#include "Platform/System/Places.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>

namespace tokwatch {
namespace {

bool isSet(const char* name) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment.
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0';
}

} // namespace

int runDesktop(const std::vector<std::string>& options) {
    // The toolkit's own variable counts too: it may name a platform that needs no display server.
    if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY") && !isSet("QT_QPA_PLATFORM"))
        throw CommandError(
            "there is no display to show windows on; without one there are the commands summary, "
            "limits, status and doctor (see tokwatch --help)");
    const std::filesystem::path program = ourProgram("tokwatch-desktop");
    std::vector<std::string> command{program.string()};
    command.insert(command.end(), options.begin(), options.end());
    std::vector<char*> arguments;
    for (std::string& argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    ::execv(program.c_str(), arguments.data());
    if (errno == ENOENT)
        throw CommandError("the desktop application is not installed: there is no " +
                           program.string() + "; the package tokwatch-desktop has it");
    throw CommandError("starting " + program.string() +
                       " failed: " + std::generic_category().message(errno));
}

} // namespace tokwatch

#include "Platform/System/Places.h"
#include "Tokwatch/CommandLine/Frame/CommandFrame.h"
#include "Tokwatch/CommandLine/StoredCommands.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace tokwatch {
namespace {

bool isSet(const char* name) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment.
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0';
}

} // namespace

int StoredCommands::run(const CommandSurroundings&, const DesktopOptions& options) {
    // The toolkit's own variable counts too: it may name a platform that needs no display server.
    if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY") && !isSet("QT_QPA_PLATFORM"))
        throw CommandError(
            "there is no display to show windows on; without one there are the commands summary, "
            "limits, status and doctor (see tokwatch --help)");
    const std::string program = "tokwatch-desktop";
    const std::filesystem::path place = ourProgram(program);
    std::error_code ignored;
    if (!std::filesystem::exists(place, ignored))
        throw CommandError("the desktop application is not installed: there is no " +
                           place.string() + "; the package tokwatch-desktop has it");
    std::vector<std::string> words{program};
    words.insert(words.end(), options.words.begin(), options.words.end());
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    become(program, arguments.data());
}

} // namespace tokwatch

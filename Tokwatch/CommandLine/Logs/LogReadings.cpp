#include "Tokwatch/CommandLine/Logs/LogReadings.h"

#include "Tokwatch/CommandLine/Terminal/ProgressBar.h"
#include "Tokwatch/Display/HomeRelative.h"

#include <algorithm>

namespace tokwatch {
namespace {

/// How many files or folders are named to people.
constexpr std::size_t mostNamed = 10;

} // namespace

LogReading readLogs(const CommandSurroundings& surroundings, std::optional<ProviderID> provider,
                    Date touchedSince, KeepLines keep) {
    std::vector<ProviderID> providers(allCases<ProviderID>.begin(), allCases<ProviderID>.end());
    if (provider) providers = {*provider};
    ProgressBar progress(surroundings.terminal);
    LogReading reading =
        ResponseFiles(surroundings.locations(), keep)
            .read(providers, touchedSince, [&](std::int64_t read, std::int64_t all) {
                progress.show("sessions", read, all);
            });
    surroundings.terminal.clearTransient();
    return reading;
}

void printUnread(const CommandSurroundings& surroundings, const LogReading& reading) {
    Terminal& terminal = surroundings.terminal;
    const auto show = [&](const char* title, std::size_t count, const auto& lineOf) {
        if (count == 0) return;
        terminal.line();
        terminal.line(title);
        for (std::size_t i = 0; i < std::min(count, mostNamed); ++i)
            terminal.line("  " + lineOf(i));
        if (count > mostNamed)
            terminal.line("  and " + std::to_string(count - mostNamed) + " more; --json names all");
    };
    const std::string& home = surroundings.paths.home.native();
    show("Not counted, because they could not be read:", reading.unread.size(), [&](std::size_t i) {
        return homeRelative(reading.unread[i].path, home) + ": " + reading.unread[i].reason;
    });
    show("Not counted, because they went away meanwhile:", reading.gone.size(),
         [&](std::size_t i) { return homeRelative(reading.gone[i], home); });
}

void putUnread(Json& json, const LogReading& reading) {
    Json& unread = json["unread"] = Json::array();
    for (const LogListing::Failure& failure : reading.unread)
        unread.push_back({{"path", failure.path}, {"reason", failure.reason}});
    json["gone"] = reading.gone;
}

void requireWhole(const CommandSurroundings& surroundings, const LogReading& reading) {
    if (reading.unread.empty()) return;
    const LogListing::Failure& first = reading.unread.front();
    const std::size_t count = reading.unread.size();
    throw CommandError(
        "could not read " +
        (count == 1 ? "" : std::to_string(count) + " files or folders, the first of them ") +
        homeRelative(first.path, surroundings.paths.home.native()) + ": " + first.reason);
}

} // namespace tokwatch

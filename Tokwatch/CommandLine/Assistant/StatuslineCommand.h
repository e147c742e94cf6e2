#pragma once

#include "Tokwatch/CommandLine/Assistant/AssistantLine.h"
#include "Tokwatch/CommandLine/Frame/CommandFrame.h"

#include <string>
#include <vector>

namespace tokwatch {

struct StatuslineOptions {
    static constexpr const char* program = programs::stored;
    std::vector<LinePart> parts{allCases<LinePart>.begin(), allCases<LinePart>.end()};
    std::vector<std::string> unknownParts; ///< as they were named
};

/// Registers `tokwatch statusline`.
CLI::App& addStatusline(CLI::App& app, DataArguments& arguments, StatuslineOptions& options);

/// `tokwatch statusline`: what Claude Code's own status line runs at each of its changes. Reads
/// what the assistant tells on standard input, stores what that says of limits, and prints one
/// line.
///
/// Whatever is told and whatever fails, there is a line and the status is 0: an error would leave
/// the user's prompt without one. Parts that do not exist are said there, as nobody sees standard
/// error. No login is read and nobody is asked, which is all that the
/// switch for Claude's live limits forbids: while it is off, the user who had this command put into
/// the assistant gets its numbers all the same. They are stored as usual, and other surfaces show
/// them by the switch, with their date.
int runStatusline(const UserPaths& paths, bool json, const StatuslineOptions& options);

} // namespace tokwatch

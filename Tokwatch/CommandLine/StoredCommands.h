#pragma once

#include "Tokwatch/CommandLine/Command.h"
#include "Tokwatch/CommandLine/CommandSurroundings.h"

namespace tokwatch {

/// The commands that need no more than what is stored. All return the status that the process ends
/// with; CommandError tells what kept them from their work.
struct StoredCommands {
    /// Becomes the desktop application with the same words. Returns only by CommandError: without a
    /// display, or where the desktop part is not installed.
    static int run(const CommandSurroundings& surroundings, const DesktopOptions& options);
    static int run(const CommandSurroundings& surroundings, const StatuslineOptions& options);
    /// Without a look at logs or network.
    static int run(const CommandSurroundings& surroundings, const StatusOptions& options);
    /// Without any use of the network.
    static int run(const CommandSurroundings& surroundings, const LimitsOptions& options);
    static int run(const CommandSurroundings& surroundings, const SnapshotOptions& options);
    /// Without a look at logs or network. CommandError where counters could not be kept from
    /// falling.
    static int run(const CommandSurroundings& surroundings, const ExportOptions& options);
};

} // namespace tokwatch

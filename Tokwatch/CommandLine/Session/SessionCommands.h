#pragma once

#include "Tokwatch/CommandLine/Command.h"
#include "Tokwatch/CommandLine/CommandSurroundings.h"

namespace tokwatch {

/// The commands that need an event loop: to go on, for the session's bus, the network or the
/// settings file. All return the status that the process ends with; CommandError tells what kept
/// them from their work.
struct SessionCommands {
    /// The whole application without its windows, until a signal ends it (status 0) or nobody reads
    /// its output any more (status 1): it indexes, watches, fetches, publishes, and writes the
    /// title's line at once and at each change. Of several followers over one data directory one
    /// does the work, and the others show what it stores; when it ends, another takes over.
    static int run(const CommandSurroundings& surroundings, const FollowOptions& options);
    /// The same on one page of the terminal, kept up to date, with today's usage and the running
    /// block; until q or a signal ends it. Where there is no terminal, it follows.
    static int run(const CommandSurroundings& surroundings, const WatchOptions& options);
    /// Asks the providers' services first, those of enabled assistants that are present here;
    /// CommandError when afterwards there is nothing to show of any of them.
    static int run(const CommandSurroundings& surroundings, const FreshLimitsOptions& options);
    /// Asks the applications of this session to refresh.
    static int run(const CommandSurroundings& surroundings, const RefreshOptions& options);
    /// In JSON an object, numbers and truth values as such, all else as text that `set` takes.
    static int run(const CommandSurroundings& surroundings, const ListSettingsOptions& options);
    static int run(const CommandSurroundings& surroundings, const GetSettingOptions& options);
    /// A value that the setting does not take is a usage error.
    static int run(const CommandSurroundings& surroundings, const SetSettingOptions& options);
    /// What was found where and what of it works. Status 1 when something is broken.
    static int run(const CommandSurroundings& surroundings, const DoctorOptions& options);
    /// What may stand in the last word, as shells offer it: one line each, "--unit\tLead with money
    /// or tokens". A directory is asked for by ":directories" alone, which the shell has to list
    /// itself.
    static int run(const CommandSurroundings& surroundings, const CompletionOptions& options);
};

} // namespace tokwatch

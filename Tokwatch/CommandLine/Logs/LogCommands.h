#pragma once

#include "Tokwatch/CommandLine/Command.h"
#include "Tokwatch/CommandLine/CommandSurroundings.h"

namespace tokwatch {

/// The commands that read the assistants' logs. All return the status that the process ends with;
/// CommandError tells what kept them from their work.
struct LogCommands {
    static int run(const CommandSurroundings& surroundings, const IndexOptions& options);
    static int run(const CommandSurroundings& surroundings, const RereadOptions& options);
    static int run(const CommandSurroundings& surroundings, const SummaryOptions& options);
    /// Reads the files that were touched in the window, and the store not at all. Status 1 when
    /// some of them could not be read; the rest is shown.
    static int run(const CommandSurroundings& surroundings, const ReportOptions& options);
    /// What the files hold, line by line, and the store's sums beside theirs, with the reason of
    /// each difference. Reads all files and writes nothing. Status 1 when a difference has no
    /// reason, or something could not be read.
    static int run(const CommandSurroundings& surroundings, const AuditOptions& options);
};

} // namespace tokwatch

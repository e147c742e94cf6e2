#include "Tokwatch/CommandLine/Commands.h"

#include "TokwatchCore/Store/SnapshotStore.h"

namespace tokwatch {

int runSnapshot(const CommandEnvironment& environment) {
    const std::optional<std::filesystem::path> directory = environment.paths.snapshotDirectory();
    const std::optional<Snapshot> snapshot = SnapshotStore(directory).read();
    if (!snapshot)
        throw CommandError("there is no snapshot in " +
                           directory.value_or("any data directory").string() +
                           "; the running application writes it");
    environment.terminal.line(jsonText(encode(*snapshot, DateCoding::iso8601)));
    return exitOk;
}

} // namespace tokwatch

#include "Tokwatch/CommandLine/StoredCommands.h"
#include "Tokwatch/CommandLine/Terminal/VersionedJson.h"
#include "TokwatchCore/Store/SnapshotStore.h"

namespace tokwatch {

int StoredCommands::run(const CommandSurroundings& surroundings, const SnapshotOptions&) {
    const std::optional<std::filesystem::path> directory = surroundings.paths.snapshotDirectory();
    const std::optional<Snapshot> snapshot = SnapshotStore(directory).read();
    if (!snapshot)
        throw CommandError("there is no snapshot in " +
                           directory.value_or("any data directory").string() +
                           "; the running application writes it");
    surroundings.terminal.line(jsonText(versioned(encode(*snapshot, DateCoding::iso8601))));
    return exitOk;
}

} // namespace tokwatch

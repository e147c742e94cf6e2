#include "RereadCommand.h"

#include "IndexCommand.h"

namespace tokwatch {

int runReread(const CommandEnvironment& environment, ProviderID provider) {
    environment.requireHome();
    const std::shared_ptr<UsageStore> store = environment.openStore();
    try {
        store->resetCursors(provider);
    } catch (const UsageStoreError& error) {
        throw CommandError("resetting " + std::string(rawValue(provider)) +
                           " cursors failed: " + error.what());
    }
    printIndexReport(environment, runIndexPass(environment, store));
    return exitOk;
}

} // namespace tokwatch

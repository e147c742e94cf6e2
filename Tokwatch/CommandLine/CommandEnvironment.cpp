#include "CommandEnvironment.h"

#include <system_error>

namespace tokwatch {

std::shared_ptr<UsageStore> CommandEnvironment::openStore() const {
    const std::optional<std::filesystem::path> database = paths.database();
    if (!database)
        throw CommandError("there is no data directory: neither XDG_DATA_HOME nor HOME is set");
    try {
        return std::make_shared<UsageStore>(*database);
    } catch (const UsageStoreError& error) {
        throw CommandError("opening the usage store " + database->string() +
                           " failed: " + error.what());
    }
}

void CommandEnvironment::requireHome() const {
    std::error_code ignored;
    if (!std::filesystem::is_directory(paths.home, ignored))
        throw CommandError("the home directory " + paths.home.string() + " does not exist");
}

} // namespace tokwatch

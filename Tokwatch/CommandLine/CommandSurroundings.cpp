#include "Tokwatch/CommandLine/CommandSurroundings.h"

#include "Tokwatch/Preferences/PlainSettings.h"
#include "TokwatchCore/Presentation/ClaudeGate.h"
#include "TokwatchCore/Store/LimitHistory.h"
#include "TokwatchCore/Store/StoredLimits.h"
#include "TokwatchCore/Support/SystemLog.h"

#include <system_error>

namespace tokwatch {
namespace {

CommandError openFailure(const std::filesystem::path& database, const UsageStoreError& error) {
    return CommandError("opening the usage store " + database.string() +
                        " failed: " + error.what());
}

std::shared_ptr<UsageStore> recording(std::shared_ptr<UsageStore> store,
                                      const std::shared_ptr<LimitHistory>& history) {
    recordLimits(*store, history);
    return store;
}

} // namespace

std::filesystem::path CommandSurroundings::requireDatabase() const {
    const std::optional<std::filesystem::path> database = paths.database();
    if (!database)
        throw CommandError("there is no data directory: neither XDG_DATA_HOME nor HOME is set");
    return *database;
}

std::shared_ptr<UsageStore> CommandSurroundings::openStore() const {
    const std::filesystem::path database = requireDatabase();
    try {
        return recording(std::make_shared<UsageStore>(database), history);
    } catch (const UsageStoreError& error) {
        throw openFailure(database, error);
    }
}

std::shared_ptr<UsageStore> CommandSurroundings::openStoreForReading() const {
    const std::filesystem::path database = requireDatabase();
    try {
        return recording(std::make_shared<UsageStore>(database), history);
    } catch (const UsageStoreError& reason) {
        if (reason.isLocked()) throw openFailure(database, reason);
        try {
            std::shared_ptr<UsageStore> store = UsageStore::readOnly(database);
            systemLog(std::string("the usage store can only be read: ") + reason.what());
            return store;
        } catch (const UsageStoreError&) {
            throw openFailure(database, reason);
        }
    }
}

LimitsByProvider CommandSurroundings::limits(UsageStore& store, const PlainSettings& settings,
                                             std::span<const ProviderID> providers) const {
    try {
        return ClaudeGate::applied(storedLimits(store, providers), settings.claudeLiveLimits,
                                   now());
    } catch (const UsageStoreError& error) {
        throw CommandError(std::string("reading the usage store failed: ") + error.what());
    }
}

RunOuts CommandSurroundings::runOuts(const LimitsByProvider& limits) const {
    if (!history) return {};
    const Date present = now();
    const auto samples = history->samples(limits, present);
    return samples ? RunOuts(limits, *samples, present, calendar()) : RunOuts();
}

void CommandSurroundings::requireHome() const {
    std::error_code ignored;
    if (!std::filesystem::is_directory(paths.home, ignored))
        throw CommandError("the home directory " + paths.home.string() + " does not exist");
}

} // namespace tokwatch

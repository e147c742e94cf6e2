#include "Tokwatch/CommandLine/RereadCommand.h"

#include "Tokwatch/CommandLine/IndexCommand.h"
#include "TokwatchCore/Ingestion/LogFiles.h"
#include "TokwatchCore/Records/RecordCoding.h"

#include <algorithm>
#include <vector>

namespace tokwatch {
namespace {

bool decodes(const std::string& path, const std::string& json) {
    try {
        decodeCursorRow(path, json);
        return true;
    } catch (const DecodingError&) {
        return false;
    }
}

/// The provider's files whose stored positions say nothing: a reset cannot tell whose they are and
/// leaves them alone, and so does a pass.
std::vector<std::string> stuckFiles(UsageStore& store, const ProviderLocations& locations,
                                    ProviderID provider) {
    std::vector<std::string> stuck;
    for (const auto& [path, json] : store.cursorTexts()) {
        const bool isOurs = std::ranges::any_of(locations.logRoots(provider),
                                                [&path](const std::filesystem::path& root) {
                                                    return pathBelow(root, path).has_value();
                                                });
        if (isOurs && !decodes(path, json)) stuck.push_back(path);
    }
    std::ranges::sort(stuck);
    return stuck;
}

} // namespace

int runReread(const CommandEnvironment& environment, ProviderID provider) {
    environment.requireHome();
    const std::shared_ptr<UsageStore> store = environment.openStore();
    std::vector<std::string> stuck;
    try {
        store->resetCursors(provider);
        stuck = stuckFiles(*store, environment.locations(), provider);
    } catch (const UsageStoreError& error) {
        throw CommandError("resetting " + std::string(rawValue(provider)) +
                           " cursors failed: " + error.what());
    }
    const IndexReport report = runIndexPass(environment, store);
    printIndexReport(environment, report);
    if (!stuck.empty())
        throw CommandError("the stored read positions of " +
                           counted(static_cast<std::int64_t>(stuck.size()), "file") +
                           " do not decode, so these are not read again: " + stuck.front() +
                           (stuck.size() > 1 ? ", …" : ""));
    requireWhole(report);
    return exitOk;
}

} // namespace tokwatch
